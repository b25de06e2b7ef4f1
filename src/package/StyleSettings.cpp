#include "package/StyleSettings.h"

#include <algorithm>
#include <utility>

namespace vesk::package {

namespace {

/// The case of the list with this raw value, or nothing.
template <typename Cases, typename Raw>
auto caseOf(const Cases& cases, Raw raw) -> std::optional<typename Cases::value_type> {
  const auto* found =
      std::ranges::find(cases, raw, [](auto candidate) { return rawValue(candidate); });
  if (found == cases.end()) return std::nullopt;
  return *found;
}

}  // namespace

float rawValue(RippleStyle style) {
  switch (style) {
    case RippleStyle::ripple:
      return 0.0F;
    case RippleStyle::ring:
      return 1.0F;
    case RippleStyle::dot:
      return 2.0F;
  }
  std::unreachable();
}

std::string_view rawValue(CursorStyle style) {
  switch (style) {
    case CursorStyle::arrow:
      return "箭头";
    case CursorStyle::arrowDark:
      return "深色箭头";
    case CursorStyle::dot:
      return "光点";
    case CursorStyle::ring:
      return "描边环";
    case CursorStyle::crosshair:
      return "准星";
  }
  std::unreachable();
}

std::string_view rawValue(CameraMode mode) {
  switch (mode) {
    case CameraMode::zoom:
      return "放大";
    case CameraMode::perspective:
      return "3D 透视";
  }
  std::unreachable();
}

std::string_view rawValue(FrameStyle::Background background) {
  switch (background) {
    case FrameStyle::Background::none:
      return "无";
    case FrameStyle::Background::solid:
      return "纯色";
    case FrameStyle::Background::gradient:
      return "渐变";
  }
  std::unreachable();
}

std::string_view rawValue(PiPSettings::Shape shape) {
  switch (shape) {
    case PiPSettings::Shape::circle:
      return "圆形";
    case PiPSettings::Shape::rounded:
      return "圆角";
  }
  std::unreachable();
}

std::string_view tooltip(CursorStyle style) {
  switch (style) {
    case CursorStyle::arrow:
      return "深浅背景都压得住";
    case CursorStyle::arrowDark:
      return "浅色内容上更稳";
    case CursorStyle::dot:
      return "只标位置，不挡内容";
    case CursorStyle::ring:
      return "指得清又不遮挡";
    case CursorStyle::crosshair:
      return "像素级操作";
  }
  std::unreachable();
}

std::optional<RippleStyle> rippleStyle(float raw) {
  return caseOf(allRippleStyles, raw);
}

std::optional<CursorStyle> cursorStyle(std::string_view raw) {
  return caseOf(allCursorStyles, raw);
}

std::optional<CameraMode> cameraMode(std::string_view raw) {
  return caseOf(allCameraModes, raw);
}

std::optional<FrameStyle::Background> frameBackground(std::string_view raw) {
  return caseOf(FrameStyle::allBackgrounds, raw);
}

std::optional<PiPSettings::Shape> pipShape(std::string_view raw) {
  return caseOf(PiPSettings::allShapes, raw);
}

}  // namespace vesk::package
