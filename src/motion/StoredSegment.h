#pragma once

#include <string_view>

#include "motion/CameraEase.h"
#include "motion/EffectTimeline.h"
#include "motion/ZoomSegment.h"
#include "package/EditDocument.h"

// From the values of an edit document to those of motion and back.
namespace vesk::motion {

package::EditDocument::Segment storedSegment(const ZoomSegment& segment);

/// Positions pass to single precision; one beyond its range stays finite.
ZoomSegment zoomSegment(const package::EditDocument::Segment& stored);

/// The sensitivity of this raw value; `standard` for a string without a case.
Sensitivity sensitivityNamed(std::string_view raw);

/// The curve of this raw value; `smooth` for a string without a case.
CameraEase cameraEaseNamed(std::string_view raw);

}  // namespace vesk::motion
