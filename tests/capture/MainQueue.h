#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "capture/PostToMain.h"

namespace vesk::capture {

/// The main thread's list of things to do, which a test works off.
class MainQueue {
 public:
  PostToMain poster() {
    return [this](std::function<void()> task) {
      const std::scoped_lock lock{mutex_};
      tasks_.push_back(std::move(task));
      posted_.notify_one();
    };
  }
  /// Works tasks off until a condition holds; false after five seconds.
  bool runUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!condition()) {
      std::unique_lock lock{mutex_};
      if (!posted_.wait_until(lock, end, [this] { return !tasks_.empty(); })) return false;
      auto task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
    }
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> tasks_;
};

}  // namespace vesk::capture
