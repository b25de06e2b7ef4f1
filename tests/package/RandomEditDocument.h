#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "package/EditDocument.h"

namespace vesk::package {

/// Edit documents of any finite numbers and any UTF-8 strings, the same for a seed everywhere.
class RandomEditDocument {
 public:
  explicit RandomEditDocument(std::uint64_t seed) : bits_(seed) {}

  EditDocument document() {
    EditDocument document;
    document.version = static_cast<std::int64_t>(bits_());
    if (flip()) {
      for (auto count = below(5); count > 0; --count) {
        if (!document.segments) document.segments.emplace();
        document.segments->push_back(segment());
      }
      if (flip()) document.segments.emplace();
    }
    fill(document.sensitivity, document.useAutoDetection, document.followSpeed);
    auto& ripple = document.ripple;
    fill(ripple.style, ripple.size, ripple.duration, ripple.color, ripple.opacity, ripple.stroke,
         ripple.enabled);
    auto& cursor = document.cursor;
    fill(cursor.visible, cursor.style, cursor.scale, cursor.smoothing, cursor.smoothingWindow,
         cursor.clickShrink);
    auto& camera = document.camera3D;
    fill(camera.enabled, camera.fov, camera.yaw, camera.pitch, camera.roll);
    fill(document.transitionEase);
    auto& pip = document.pip;
    fill(pip.enabled, pip.shape, pip.size, pip.centerX, pip.centerY, pip.cornerRadius, pip.border,
         pip.shadow, pip.mirrored);
    auto& frame = document.frame;
    fill(frame.enabled, frame.background, frame.padding, frame.cornerRadius, frame.shadow,
         frame.colorA, frame.colorB);
    fill(document.motionBlurEnabled, document.motionBlurStrength, document.systemVolume,
         document.micVolume);
    return document;
  }

  EditDocument::Segment segment() {
    EditDocument::Segment segment;
    fill(segment.id, segment.start, segment.end, segment.enabled, segment.level, segment.focusX,
         segment.focusY, segment.followCursor, segment.deadzone, segment.followSpeed,
         segment.isManual, segment.endsWithExplicitReset, segment.easeIn, segment.easeOut,
         segment.holdMin, segment.motionBlur, segment.panDuration);
    if (flip()) segment.sourceClickTime = number();
    for (auto count = below(3); count > 0; --count) {
      segment.waypoints.push_back({number(), number(), number()});
    }
    return segment;
  }

  std::uint64_t below(std::uint64_t limit) { return bits_() % limit; }

 private:
  bool flip() { return below(2) == 0; }

  /// Of every size and sign: any bit pattern that is finite, or a plain one.
  double number() {
    if (flip()) return static_cast<double>(below(20001)) / 10000 - 1;
    const auto number = std::bit_cast<double>(bits_());
    return std::isfinite(number) ? number : std::numeric_limits<double>::max();
  }

  std::string text() {
    static constexpr std::array pieces{"平", "é", "a", "\"", "\\", "/", "\n", "😀", "\x01", " "};
    std::string text;
    for (auto count = below(6); count > 0; --count) text += pieces.at(below(pieces.size()));
    return text;
  }

  void fillOne(bool& value) { value = flip(); }
  void fillOne(double& value) { value = number(); }
  void fillOne(std::string& value) { value = text(); }
  void fillOne(std::vector<double>& value) {
    value.resize(below(6));
    for (double& element : value) element = number();
  }

  template <typename... Values>
  void fill(Values&... values) {
    (fillOne(values), ...);
  }

  std::mt19937_64 bits_;
};

}  // namespace vesk::package
