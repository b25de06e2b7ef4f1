#pragma once

#include <string_view>
#include <tuple>

#include "package/EditDocument.h"

// The keys of an edit document, listed once for reading and for writing.
namespace vesk::package {

template <typename Record, typename Value>
struct EditField {
  std::string_view key;
  Value Record::* member;
  bool isRequired = false;
};

template <typename Record, typename Value>
constexpr EditField<Record, Value> required(std::string_view key, Value Record::* member) {
  return {key, member, true};
}

/// The fields of a record of the document, as a tuple of EditField.
template <typename Record>
inline constexpr auto editFields = nullptr;

template <>
inline constexpr auto editFields<EditDocument::Segment::Waypoint> = [] {
  using Waypoint = EditDocument::Segment::Waypoint;
  return std::tuple{required("t", &Waypoint::t), required("x", &Waypoint::x),
                    required("y", &Waypoint::y)};
}();

template <>
inline constexpr auto editFields<EditDocument::Segment> = [] {
  using Segment = EditDocument::Segment;
  return std::tuple{
      EditField{"id", &Segment::id},
      required("start", &Segment::start),
      required("end", &Segment::end),
      EditField{"enabled", &Segment::enabled},
      EditField{"sourceClickTime", &Segment::sourceClickTime},
      EditField{"level", &Segment::level},
      EditField{"focusX", &Segment::focusX},
      EditField{"focusY", &Segment::focusY},
      EditField{"followCursor", &Segment::followCursor},
      EditField{"deadzone", &Segment::deadzone},
      EditField{"followSpeed", &Segment::followSpeed},
      EditField{"isManual", &Segment::isManual},
      EditField{"endsWithExplicitReset", &Segment::endsWithExplicitReset},
      EditField{"easeIn", &Segment::easeIn},
      EditField{"easeOut", &Segment::easeOut},
      EditField{"holdMin", &Segment::holdMin},
      EditField{"motionBlur", &Segment::motionBlur},
      EditField{"panDuration", &Segment::panDuration},
      EditField{"waypoints", &Segment::waypoints},
  };
}();

template <>
inline constexpr auto editFields<EditDocument::RippleDoc> = [] {
  using Ripple = EditDocument::RippleDoc;
  return std::tuple{
      EditField{"style", &Ripple::style},       EditField{"size", &Ripple::size},
      EditField{"duration", &Ripple::duration}, EditField{"color", &Ripple::color},
      EditField{"opacity", &Ripple::opacity},   EditField{"stroke", &Ripple::stroke},
      EditField{"enabled", &Ripple::enabled},
  };
}();

template <>
inline constexpr auto editFields<EditDocument::CursorDoc> = [] {
  using Cursor = EditDocument::CursorDoc;
  return std::tuple{
      EditField{"visible", &Cursor::visible},
      EditField{"style", &Cursor::style},
      EditField{"scale", &Cursor::scale},
      EditField{"smoothing", &Cursor::smoothing},
      EditField{"smoothingWindow", &Cursor::smoothingWindow},
      EditField{"clickShrink", &Cursor::clickShrink},
  };
}();

template <>
inline constexpr auto editFields<EditDocument::Camera3DDoc> = [] {
  using Camera = EditDocument::Camera3DDoc;
  return std::tuple{
      EditField{"enabled", &Camera::enabled}, EditField{"fov", &Camera::fov},
      EditField{"yaw", &Camera::yaw},         EditField{"pitch", &Camera::pitch},
      EditField{"roll", &Camera::roll},
  };
}();

template <>
inline constexpr auto editFields<EditDocument::PiPDoc> = [] {
  using PiP = EditDocument::PiPDoc;
  return std::tuple{
      EditField{"enabled", &PiP::enabled},   EditField{"shape", &PiP::shape},
      EditField{"size", &PiP::size},         EditField{"centerX", &PiP::centerX},
      EditField{"centerY", &PiP::centerY},   EditField{"cornerRadius", &PiP::cornerRadius},
      EditField{"border", &PiP::border},     EditField{"shadow", &PiP::shadow},
      EditField{"mirrored", &PiP::mirrored},
  };
}();

template <>
inline constexpr auto editFields<EditDocument::FrameDoc> = [] {
  using Frame = EditDocument::FrameDoc;
  return std::tuple{
      EditField{"enabled", &Frame::enabled}, EditField{"background", &Frame::background},
      EditField{"padding", &Frame::padding}, EditField{"cornerRadius", &Frame::cornerRadius},
      EditField{"shadow", &Frame::shadow},   EditField{"colorA", &Frame::colorA},
      EditField{"colorB", &Frame::colorB},
  };
}();

template <>
inline constexpr auto editFields<EditDocument> = std::tuple{
    EditField{"version", &EditDocument::version},
    EditField{"segments", &EditDocument::segments},
    EditField{"sensitivity", &EditDocument::sensitivity},
    EditField{"useAutoDetection", &EditDocument::useAutoDetection},
    EditField{"followSpeed", &EditDocument::followSpeed},
    EditField{"ripple", &EditDocument::ripple},
    EditField{"cursor", &EditDocument::cursor},
    EditField{"camera3D", &EditDocument::camera3D},
    EditField{"transitionEase", &EditDocument::transitionEase},
    EditField{"pip", &EditDocument::pip},
    EditField{"frame", &EditDocument::frame},
    EditField{"motionBlurEnabled", &EditDocument::motionBlurEnabled},
    EditField{"motionBlurStrength", &EditDocument::motionBlurStrength},
    EditField{"systemVolume", &EditDocument::systemVolume},
    EditField{"micVolume", &EditDocument::micVolume},
};

}  // namespace vesk::package
