#pragma once

#include <glm/vec2.hpp>
#include <optional>

#include "motion/CameraEase.h"
#include "motion/CameraTrack.h"
#include "package/StyleSettings.h"

namespace vesk::compositor {

/// Everything that the user decides about the picture and that an export freezes: a plain value,
/// so that a copy of it shares nothing with its source.
struct CompositeSettings {
  package::RippleSettings rippleSettings;
  package::CursorSettings cursorSettings;
  package::FrameStyle frameStyle;
  package::Camera3DSettings camera3D;
  motion::CameraEase transitionEase = motion::CameraEase::smooth;
  package::PiPSettings pip;
  bool motionBlurEnabled = true;
  double motionBlurStrength = 1.0;  ///< multiplies the track's blur
  double systemVolume = 1.0;        ///< gain of the system sound
  double micVolume = 1.0;           ///< gain of the narration
  bool manualZoom = false;          ///< ignore the track and use the two values below
  double zoomLevel = 1.0;
  glm::vec2 zoomCenter{0.5F, 0.5F};
  std::optional<motion::CameraTrack> cameraTrack;
  bool operator==(const CompositeSettings&) const = default;

  /// True when a track with samples governs the camera.
  bool followsTrack() const {
    return !manualZoom && cameraTrack.has_value() && !cameraTrack->samples.empty();
  }

  /// The camera at a time of the recording: the track's, or one built from the manual zoom.
  motion::CameraPose pose(double time) const;
};

}  // namespace vesk::compositor
