#pragma once

#include "media/I420Picture.h"
#include "media/LibavHandles.h"

namespace vesk::media {

/// Lets an empty frame point at a picture's memory, which must outlive what is done with the frame.
/// @return libav's code, negative for a failure.
[[nodiscard]] int pointAt(const I420Picture& picture, AVFrame& frame);

/// A copy of a picture in the layout of hardware encoders: Y, then Cb and Cr in turns (NV12). Null
/// without memory.
[[nodiscard]] FramePtr nv12Frame(const I420Picture& picture);

/// Tells an encoder how the colours of an I420Picture are meant.
void describeColours(AVCodecContext& encoder);

}  // namespace vesk::media
