#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vesk::capture::contract {

/// How long a real server, or a program that has just been started, may take until a test gives up.
inline constexpr std::chrono::seconds patience{20};

/// Whether a condition came true in time.
[[nodiscard]] inline bool comesTrue(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds{2});
  }
  return true;
}

/// What callbacks said, on whatever thread, in order. Must outlive those who call back.
template <typename T>
class Heard {
 public:
  void add(T value) {
    {
      const std::scoped_lock lock{mutex_};
      values_.push_back(std::move(value));
    }
    added_.notify_all();
  }

  /// A callback that adds what it is given.
  auto adder() {
    return [this](const T& value) { add(value); };
  }

  std::vector<T> all() const {
    const std::scoped_lock lock{mutex_};
    return values_;
  }

  std::size_t count() const {
    const std::scoped_lock lock{mutex_};
    return values_.size();
  }

  /// Whether at least so many came in time.
  [[nodiscard]] bool comesTo(std::size_t count) const {
    return waitUntil([&] { return values_.size() >= count; });
  }

  /// Whether one of which `condition` is true came in time, among those from `first` on.
  template <typename Condition>
  [[nodiscard]] bool has(Condition condition, std::size_t first = 0) const {
    return waitUntil([&] {
      for (std::size_t i = first; i < values_.size(); ++i) {
        if (condition(values_[i])) return true;
      }
      return false;
    });
  }

 private:
  template <typename Condition>
  bool waitUntil(Condition condition) const {
    std::unique_lock lock{mutex_};
    return added_.wait_for(lock, patience, condition);
  }

  mutable std::mutex mutex_;
  mutable std::condition_variable added_;
  std::vector<T> values_;
};

}  // namespace vesk::capture::contract
