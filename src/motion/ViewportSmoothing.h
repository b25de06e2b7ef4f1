#pragma once

#include <vector>

#include "motion/CameraPose.h"

namespace vesk::motion {

/// Second pass of a camera track: a triangular filter over 13 viewports that rounds the corners of
/// the keyframe path. Changes `target` and `framing` only.
std::vector<CameraPose> smoothViewports(std::vector<CameraPose> samples);

}  // namespace vesk::motion
