#include "capture/ScopeGeometry.h"

#include <algorithm>
#include <variant>
#include <vector>

#include "capture/Geometry.h"

namespace vesk::capture {
namespace {

using package::CaptureScope;

template <typename Condition>
std::optional<Display> firstDisplay(const DisplayGeometry& geometry, Condition condition) {
  const auto displays = geometry.displays();
  const auto found = std::ranges::find_if(displays, condition);
  if (found == displays.end()) return std::nullopt;
  return *found;
}

struct DisplayOfScope {
  const DisplayGeometry& geometry;

  std::optional<Display> operator()(const CaptureScope::Display& display) const {
    return displayWithID(display.id, geometry);
  }
  std::optional<Display> operator()(const CaptureScope::Region& region) const {
    return displayWithID(region.displayID, geometry);
  }
  std::optional<Display> operator()(const CaptureScope::Window& window) const {
    const auto frame = geometry.windowFrame(window.id);
    if (!frame) return geometry.focusedDisplay();
    const auto touched = firstDisplay(
        geometry, [&](const Display& display) { return intersects(display.frame, *frame); });
    return touched ? touched : geometry.focusedDisplay();
  }
};

struct RectangleOfScope {
  const Display& target;
  const DisplayGeometry& geometry;

  package::Rect operator()(const CaptureScope::Display& display) const {
    return displayWithID(display.id, geometry).value_or(target).frame;
  }
  package::Rect operator()(const CaptureScope::Region& region) const {
    return flipped(region.rect, primaryHeight(geometry.displays()));
  }
  package::Rect operator()(const CaptureScope::Window& window) const {
    return geometry.windowFrame(window.id).value_or(target.frame);
  }
};

}  // namespace

std::optional<Display> displayWithID(std::uint32_t id, const DisplayGeometry& geometry) {
  return firstDisplay(geometry, [&](const Display& display) { return display.id == id; });
}

std::optional<Display> defaultDisplay(const DisplayGeometry& geometry) {
  if (const auto focused = geometry.focusedDisplay()) return focused;
  return firstDisplay(geometry, [](const Display&) { return true; });
}

std::optional<Display> displayOf(const CaptureScope& scope, const DisplayGeometry& geometry) {
  return std::visit(DisplayOfScope{geometry}, scope.value);
}

package::Rect rectangleOf(const CaptureScope& scope, const Display& target,
                          const DisplayGeometry& geometry) {
  return std::visit(RectangleOfScope{target, geometry}, scope.value);
}

CaptureScope scopeToStore(const CaptureScope& scope, const std::vector<Display>& displays) {
  const auto* region = std::get_if<CaptureScope::Region>(&scope.value);
  if (region == nullptr) return scope;
  const auto display = std::ranges::find(displays, region->displayID, &Display::id);
  if (display == displays.end()) return scope;
  const auto frame = flipped(display->frame, primaryHeight(displays));
  auto stored = *region;
  stored.rect.x -= frame.x;
  stored.rect.y -= frame.y;
  return {stored};
}

}  // namespace vesk::capture
