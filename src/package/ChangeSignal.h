#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vesk::package {

/// Tells observers that a value has changed. To be used by one thread. An observer may subscribe,
/// unsubscribe and change the value while it is told; a subscription may outlive the signal.
class ChangeSignal {
 public:
  using Observer = std::function<void()>;

  /// Keeps an observer subscribed for as long as it lives.
  class [[nodiscard]] Subscription {
   public:
    Subscription() = default;

   private:
    friend ChangeSignal;
    explicit Subscription(std::shared_ptr<const Observer> observer)
        : observer_(std::move(observer)) {}

    std::shared_ptr<const Observer> observer_;
  };

  Subscription subscribe(Observer observer) {
    std::erase_if(observers_, [](const auto& known) { return known.expired(); });
    const auto shared = std::make_shared<const Observer>(std::move(observer));
    observers_.push_back(shared);
    return Subscription(shared);
  }

  void notify() const {
    const auto told = observers_;
    for (const auto& known : told) {
      if (const auto observer = known.lock()) (*observer)();
    }
  }

 private:
  std::vector<std::weak_ptr<const Observer>> observers_;
};

}  // namespace vesk::package
