#include "capture/ScreenTarget.h"

#include <optional>
#include <variant>

#include "capture/ScopeGeometry.h"

namespace vesk::capture {
namespace {

using package::CaptureScope;
using Target = std::expected<ScreenRequest, CaptureError>;

/// Of a window on no display: as on the displays with the densest pixels, so that none is lost.
constexpr double fallbackScaleFactor = 2.0;

ScreenRequest areaOf(const package::Rect& rect, double scaleFactor) {
  return {.subject = ScreenRequest::Area{rect},
          .size = evenPixelSize(sizeOf(rect), scaleFactor),
          .scaleFactor = scaleFactor};
}

struct TargetOfScope {
  const CaptureScope& scope;
  const DisplayGeometry& geometry;

  Target operator()(const CaptureScope::Window& window) const {
    const auto frame = geometry.windowFrame(window.id);
    if (!frame) return std::unexpected(CaptureError::noDisplayAvailable());
    const auto display = displayOf(scope, geometry);
    const double scaleFactor = display ? display->scaleFactor : fallbackScaleFactor;
    return ScreenRequest{.subject = ScreenRequest::Window{window.id},
                         .size = evenPixelSize(sizeOf(*frame), scaleFactor),
                         .scaleFactor = scaleFactor};
  }
  Target operator()(const CaptureScope::Display& display) const { return areaOn(display.id); }
  Target operator()(const CaptureScope::Region& region) const { return areaOn(region.displayID); }

  Target areaOn(std::uint32_t displayID) const {
    if (const auto named = displayWithID(displayID, geometry)) {
      return areaOf(rectangleOf(scope, *named, geometry), named->scaleFactor);
    }
    const auto displays = geometry.displays();
    if (displays.empty()) return std::unexpected(CaptureError::noDisplayAvailable());
    return areaOf(displays.front().frame, displays.front().scaleFactor);
  }
};

}  // namespace

Target screenTarget(const CaptureScope& scope, int fps, const DisplayGeometry& geometry) {
  auto target = std::visit(TargetOfScope{scope, geometry}, scope.value);
  if (target) target->fps = fps;
  return target;
}

}  // namespace vesk::capture
