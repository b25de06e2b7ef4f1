#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

namespace vesk::capture {

/// Runs tasks one after another, in the order in which they were posted, on one thread of its own.
/// What only the tasks touch needs no lock. May be used from any thread.
class SerialQueue {
 public:
  using Task = std::move_only_function<void()>;

  /// @param name of the thread, as debuggers and `top` show it: its first 15 bytes.
  explicit SerialQueue(std::string name);
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;
  /// Runs what has been posted.
  ~SerialQueue();

  /// Does not wait.
  void post(Task task);

  /// Waits for the task and gives its result. Not to be called by a task of this queue.
  template <typename Function>
  std::invoke_result_t<Function> sync(Function function) {
    assertNotOnQueue();
    std::packaged_task<std::invoke_result_t<Function>()> task{std::move(function)};
    auto result = task.get_future();
    post([task = std::move(task)]() mutable { task(); });
    return result.get();
  }

 private:
  void assertNotOnQueue() const;
  void runAll(const std::string& name);

  std::mutex mutex_;
  std::condition_variable taskOrEnd_;
  std::deque<Task> tasks_;
  bool isEnding_ = false;
  std::jthread thread_;
};

}  // namespace vesk::capture
