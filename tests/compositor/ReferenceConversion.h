#pragma once

#include "compositor/ReferencePicture.h"
#include "media/VideoFrame.h"

namespace vesk::compositor::test {

/// A decoded picture as red, green and blue by the equations of ITU-R BT.601-7, BT.709-6 and
/// BT.2020-2, chroma read linearly between its samples where they lie; rounded to eight bits.
DoubleImage decoded(const media::VideoFrame& picture);

}  // namespace vesk::compositor::test
