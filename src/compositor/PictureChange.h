#pragma once

#include "gpu/PixelRect.h"
#include "media/VideoFrame.h"

namespace vesk::compositor {

/// The luma pixels outside which two decoded pictures are equal; empty when they are equal, the
/// whole of `now` when they are of different kinds. Even coordinates where chroma is subsampled.
gpu::PixelRect changedPixels(const media::VideoFrame& before, const media::VideoFrame& now);

}  // namespace vesk::compositor
