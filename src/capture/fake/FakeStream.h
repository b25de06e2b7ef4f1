#pragma once

#include <memory>
#include <utility>
#include <variant>

#include "capture/Listening.h"

namespace vesk::capture::fake {

/// Streams that a test feeds and ends, each for somebody who listens. May be used from any thread.
template <typename Item, typename End>
class FakeStream {
 public:
  using OnItem = std::function<void(const Item&)>;
  using OnEnd = std::function<void(const End&)>;

  std::unique_ptr<Listening> open(OnItem onItem, OnEnd onEnd) {
    return listeners_.add([onItem = std::move(onItem), onEnd = std::move(onEnd), seat = seats_,
                           hasEnded = false](const Event& event) mutable {
      if (hasEnded) return;
      if (const auto* item = std::get_if<const Item*>(&event)) {
        onItem(**item);
      } else {
        hasEnded = true;
        onEnd(*std::get<const End*>(event));
      }
    });
  }

  /// Calls back on this thread, in every stream that has not ended.
  void deliver(const Item& item) const { listeners_.call(Event{&item}); }
  /// Likewise, and nothing comes in those streams afterwards.
  void end(const End& end) const { listeners_.call(Event{&end}); }

  /// How many are listening, to ended streams too.
  long openCount() const { return seats_.use_count() - 1; }

 private:
  using Event = std::variant<const Item*, const End*>;
  struct Seat {};

  std::shared_ptr<const Seat> seats_ =
      std::make_shared<const Seat>();  ///< shared by all who listen
  Listeners<const Event&> listeners_;
};

}  // namespace vesk::capture::fake
