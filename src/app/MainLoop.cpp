#include "app/MainLoop.h"

#include <algorithm>
#include <stop_token>
#include <thread>
#include <utility>

namespace vesk::app {
namespace {

using Seconds = std::chrono::duration<double>;
using Instant = std::chrono::steady_clock::time_point;

constexpr std::chrono::milliseconds slice{50};

Instant after(Seconds time) {
  return std::chrono::steady_clock::now() +
         std::chrono::duration_cast<std::chrono::steady_clock::duration>(time);
}

class Ticker final : public capture::Listening {
 public:
  Ticker(Seconds interval, std::function<void()> tick)
      : thread_{[interval, tick = std::move(tick)](const std::stop_token& end) {
          std::mutex mutex;
          std::unique_lock lock{mutex};
          std::condition_variable_any wakeUp;
          for (auto next = after(interval);;
               next += std::chrono::duration_cast<Instant::duration>(interval)) {
            wakeUp.wait_until(lock, end, next, [] { return false; });
            if (end.stop_requested()) return;
            tick();
          }
        }} {}

 private:
  std::jthread thread_;
};

}  // namespace

std::function<void(MainLoop::Task)> MainLoop::poster() const {
  return [weak = std::weak_ptr{tasks_}](Task task) {
    if (const auto tasks = weak.lock()) post(*tasks, std::move(task));
  };
}

std::unique_ptr<capture::Listening> MainLoop::tick(Seconds interval, Task task) const {
  return std::make_unique<Ticker>(interval,
                                  [post = poster(), task = std::move(task)] { post(task); });
}

void MainLoop::post(Tasks& tasks, Task task) {
  const std::scoped_lock lock{tasks.mutex};
  tasks.waiting.push_back(std::move(task));
  tasks.posted.notify_one();
}

bool MainLoop::runUntil(const std::function<bool()>& condition, Seconds limit) {
  const auto end = after(limit);
  while (!condition()) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= end) return false;
    std::unique_lock lock{tasks_->mutex};
    if (!tasks_->posted.wait_until(lock, std::min(end, now + slice),
                                   [this] { return !tasks_->waiting.empty(); })) {
      continue;
    }
    const auto task = std::move(tasks_->waiting.front());
    tasks_->waiting.pop_front();
    lock.unlock();
    task();
  }
  return true;
}

void MainLoop::runFor(Seconds time) {
  runUntil([] { return false; }, time);
}

}  // namespace vesk::app
