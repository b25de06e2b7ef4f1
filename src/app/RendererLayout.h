#pragma once

#include "app/CameraCheck.h"
#include "package/RecordingMeta.h"

namespace vesk::app {

/// The layout that a real renderer gives a synthetic recording of 16 to 9. Both are made at the
/// first question, so that who never asks needs no graphics.
PictureLayout rendererLayout(package::Timestamp now);

}  // namespace vesk::app
