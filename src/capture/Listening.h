#pragma once

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <utility>

namespace vesk::capture {

/// Keeps callbacks coming for as long as it lives. Its end waits for a callback that runs
/// meanwhile; after that none comes. It must not be ended from within its own callback.
class [[nodiscard]] Listening {
 public:
  Listening() = default;
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;
  virtual ~Listening() = default;
};

/// Those who listen to one source of callbacks. May be used from any thread, and may go before
/// those who listen.
template <typename... Arguments>
class Listeners {
 public:
  using Callback = std::function<void(Arguments...)>;

  std::unique_ptr<Listening> add(Callback callback) {
    const std::scoped_lock lock{room_->mutex};
    return std::make_unique<Seat>(
        room_, room_->callbacks.insert(room_->callbacks.end(), std::move(callback)));
  }

  /// Calls each of them on this thread. A callback must not add listeners.
  template <typename... Values>
  void call(const Values&... values) const {
    const std::scoped_lock lock{room_->mutex};
    for (const auto& callback : room_->callbacks) callback(values...);
  }

 private:
  struct Room {
    std::mutex mutex;  ///< held while callbacks run, so that leaving waits for them
    std::list<Callback> callbacks;
  };

  class Seat final : public Listening {
   public:
    Seat(std::shared_ptr<Room> room, typename std::list<Callback>::iterator place)
        : room_{std::move(room)}, place_{place} {}
    ~Seat() override {
      const std::scoped_lock lock{room_->mutex};
      room_->callbacks.erase(place_);
    }

   private:
    std::shared_ptr<Room> room_;
    typename std::list<Callback>::iterator place_;
  };

  std::shared_ptr<Room> room_ = std::make_shared<Room>();
};

}  // namespace vesk::capture
