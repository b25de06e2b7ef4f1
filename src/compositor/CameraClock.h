#pragma once

#include "package/RecordingMeta.h"

// The camera started on its own; these functions relate its clock to the recording's. All times are
// in seconds.
namespace vesk::compositor {

/// How much later than the screen the camera started; negative when it was first, 0 when either
/// stamp is absent.
double cameraOffset(const package::RecordingMeta& meta);

/// The time in "camera.mov" that belongs to `time` on the recording's clock, never below 0. The
/// screen's t is the camera's t − offset: with the sign turned, lips would run ahead of the voice
/// by twice the offset, and the end of the file would be overrun.
double cameraTime(double time, double offset);

/// From when on a finished movie shows the camera: its first picture with light in it, so that the
/// black ones of a camera that warms up stay hidden; without one, its first picture; else 0.
double cameraVisibleFrom(const package::RecordingMeta& meta);

}  // namespace vesk::compositor
