#include "capture/fake/FakeDisplayGeometry.h"

#include <algorithm>
#include <utility>

namespace vesk::capture::fake {

std::vector<Display> FakeDisplayGeometry::displays() const {
  const std::scoped_lock lock{mutex_};
  return displays_;
}

std::optional<Display> FakeDisplayGeometry::focusedDisplay() const {
  const std::scoped_lock lock{mutex_};
  const auto found = std::ranges::find(displays_, focusedDisplay_, &Display::id);
  if (found == displays_.end()) return std::nullopt;
  return *found;
}

std::expected<std::vector<ScreenWindow>, BackendError> FakeDisplayGeometry::windows() const {
  const std::scoped_lock lock{mutex_};
  return windows_;
}

std::optional<package::Rect> FakeDisplayGeometry::windowFrame(std::uint32_t id) const {
  const std::scoped_lock lock{mutex_};
  ++lookupCount_;
  const auto found = std::ranges::find(windows_, id, &ScreenWindow::id);
  if (found == windows_.end() || !isUsableFrame(found->frame)) return std::nullopt;
  return found->frame;
}

void FakeDisplayGeometry::setDisplays(std::vector<Display> displays) {
  const std::scoped_lock lock{mutex_};
  displays_ = std::move(displays);
}

void FakeDisplayGeometry::focusDisplay(std::uint32_t id) {
  const std::scoped_lock lock{mutex_};
  focusedDisplay_ = id;
}

void FakeDisplayGeometry::putWindow(ScreenWindow window) {
  const std::scoped_lock lock{mutex_};
  std::erase_if(windows_, [&](const ScreenWindow& known) { return known.id == window.id; });
  windows_.push_back(std::move(window));
}

void FakeDisplayGeometry::closeWindow(std::uint32_t id) {
  const std::scoped_lock lock{mutex_};
  std::erase_if(windows_, [&](const ScreenWindow& window) { return window.id == id; });
}

int FakeDisplayGeometry::lookupCount() const {
  const std::scoped_lock lock{mutex_};
  return lookupCount_;
}

}  // namespace vesk::capture::fake
