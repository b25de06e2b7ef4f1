#include "capture/fake/FakeHotKeys.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vesk::capture::fake {

std::unique_ptr<Listening> FakeHotKeys::listen(Callback callback) {
  {
    const std::scoped_lock lock{mutex_};
    ++listenCount_;
  }
  return listeners_.add(std::move(callback));
}

std::expected<void, int> FakeHotKeys::hold(ID id, const Shortcut& shortcut) {
  const std::scoped_lock lock{mutex_};
  if (shortcut.keyCode > lastKey) return std::unexpected(noSuchKey);
  const bool isOccupied = std::ranges::find(occupied_, shortcut) != occupied_.end();
  const bool isHeld = std::ranges::find(held_, shortcut, &Held::shortcut) != held_.end();
  if (isOccupied || isHeld) return std::unexpected(taken);
  held_.push_back({.id = id, .shortcut = shortcut});
  return {};
}

void FakeHotKeys::releaseAll() {
  const std::scoped_lock lock{mutex_};
  held_.clear();
}

void FakeHotKeys::press(const Shortcut& shortcut) {
  std::optional<ID> pressed;
  {
    const std::scoped_lock lock{mutex_};
    const auto found = std::ranges::find(held_, shortcut, &Held::shortcut);
    if (found != held_.end()) pressed = found->id;
  }
  if (pressed) listeners_.call(*pressed);
}

void FakeHotKeys::occupy(const Shortcut& shortcut) {
  const std::scoped_lock lock{mutex_};
  occupied_.push_back(shortcut);
}

std::size_t FakeHotKeys::heldCount() const {
  const std::scoped_lock lock{mutex_};
  return held_.size();
}

int FakeHotKeys::listenCount() const {
  const std::scoped_lock lock{mutex_};
  return listenCount_;
}

}  // namespace vesk::capture::fake
