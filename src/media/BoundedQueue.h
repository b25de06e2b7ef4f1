#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace vesk::media {

/// Hands values in order from one thread to another and makes the faster of the two wait.
template <typename Value>
class BoundedQueue {
 public:
  explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

  /// Waits for room. False when the queue was closed; the value is then dropped.
  bool push(Value value) {
    std::unique_lock lock(mutex_);
    roomOrClosed_.wait(lock, [&] { return closed_ || values_.size() < capacity_; });
    if (closed_) return false;
    values_.push_back(std::move(value));
    valueOrClosed_.notify_one();
    return true;
  }

  /// Waits for a value. Nothing when the queue was closed and is empty.
  std::optional<Value> pop() {
    std::unique_lock lock(mutex_);
    valueOrClosed_.wait(lock, [&] { return closed_ || !values_.empty(); });
    if (values_.empty()) return std::nullopt;
    std::optional<Value> value(std::move(values_.front()));
    values_.pop_front();
    roomOrClosed_.notify_one();
    return value;
  }

  /// Lets nothing more in; what is in can still be taken out.
  void close() {
    const std::scoped_lock lock(mutex_);
    closed_ = true;
    roomOrClosed_.notify_all();
    valueOrClosed_.notify_all();
  }

 private:
  const std::size_t capacity_;
  std::mutex mutex_;
  std::condition_variable roomOrClosed_;
  std::condition_variable valueOrClosed_;
  std::deque<Value> values_;
  bool closed_ = false;
};

}  // namespace vesk::media
