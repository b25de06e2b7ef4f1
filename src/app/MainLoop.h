#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "capture/Listening.h"

namespace vesk::app {

/// The main thread's list of things to do in a process without a window. Functions may be posted
/// from any thread, also while the loop is not run.
class MainLoop {
 public:
  using Task = std::function<void()>;

  /// Posts to this loop; may outlive it, and then does nothing.
  std::function<void(Task)> poster() const;

  /// Posts a function at this interval for as long as the result lives. May outlive the loop.
  std::unique_ptr<capture::Listening> tick(std::chrono::duration<double> interval, Task task) const;

  /// Runs what is posted until a condition holds, which is asked after each function and at least
  /// every 50 ms; false when it does not within the limit. On the main thread.
  bool runUntil(const std::function<bool()>& condition, std::chrono::duration<double> limit);
  /// Runs what is posted for so long.
  void runFor(std::chrono::duration<double> time);

 private:
  struct Tasks {
    std::mutex mutex;
    std::condition_variable posted;
    std::deque<Task> waiting;
  };
  static void post(Tasks& tasks, Task task);

  std::shared_ptr<Tasks> tasks_ = std::make_shared<Tasks>();
};

}  // namespace vesk::app
