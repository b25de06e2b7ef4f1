#include "capture/CaptureRectangle.h"

#include <variant>

#include "capture/ScopeGeometry.h"

namespace vesk::capture {
namespace {

constexpr double refreshInterval = 0.1;

std::optional<std::uint32_t> windowOf(const package::CaptureScope& scope) {
  const auto* window = std::get_if<package::CaptureScope::Window>(&scope.value);
  if (window == nullptr) return std::nullopt;
  return window->id;
}

}  // namespace

CaptureRectangle::CaptureRectangle(const package::CaptureScope& scope, const Display& target,
                                   const DisplayGeometry& geometry, double now)
    : geometry_{geometry},
      windowID_{windowOf(scope)},
      rectangle_{rectangleOf(scope, target, geometry)},
      refreshedAt_{now} {
  bufferSize_ = sizeOf(rectangle_);
}

package::Rect CaptureRectangle::current(double now) {
  if (!beginsRefresh(now)) return known();
  // Asking the display server takes time, in which nobody else is to wait for the mutex.
  const auto frame = geometry_.windowFrame(*windowID_);
  if (!frame) return known();
  const auto fitted = fittedToBuffer(*frame, bufferSize_);
  const std::scoped_lock lock{mutex_};
  rectangle_ = fitted;
  return fitted;
}

/// True for one caller each time that a refresh is due.
bool CaptureRectangle::beginsRefresh(double now) {
  if (!windowID_) return false;
  const std::scoped_lock lock{mutex_};
  if (now - refreshedAt_ <= refreshInterval) return false;
  refreshedAt_ = now;
  return true;
}

package::Rect CaptureRectangle::known() {
  const std::scoped_lock lock{mutex_};
  return rectangle_;
}

}  // namespace vesk::capture
