#include "capture/SerialQueue.h"

#include <pthread.h>

#include <cassert>

namespace vesk::capture {
namespace {

constexpr std::size_t longestThreadName = 15;

}  // namespace

SerialQueue::SerialQueue(std::string name)
    : thread_{[this, name = std::move(name)] { runAll(name); }} {}

SerialQueue::~SerialQueue() {
  {
    const std::scoped_lock lock{mutex_};
    isEnding_ = true;
  }
  taskOrEnd_.notify_one();
}

void SerialQueue::post(Task task) {
  {
    const std::scoped_lock lock{mutex_};
    tasks_.push_back(std::move(task));
  }
  taskOrEnd_.notify_one();
}

void SerialQueue::assertNotOnQueue() const {
  assert(std::this_thread::get_id() != thread_.get_id());
}

void SerialQueue::runAll(const std::string& name) {
  ::pthread_setname_np(::pthread_self(), name.substr(0, longestThreadName).c_str());
  std::unique_lock lock{mutex_};
  while (true) {
    taskOrEnd_.wait(lock, [this] { return isEnding_ || !tasks_.empty(); });
    if (tasks_.empty()) return;
    {
      Task task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
    }  // what the task holds goes before the next begins, and outside the mutex
    lock.lock();
  }
}

}  // namespace vesk::capture
