#pragma once

#include <expected>

#include "media/LibavHandles.h"
#include "media/VideoFrame.h"
#include "package/Picture.h"

// Between the pictures of codecs and those of the user interface. A failure is a libav code.
namespace vesk::media {

/// A decoded picture scaled to a size.
[[nodiscard]] std::expected<package::Picture, int> rgbPicture(const VideoFrame& frame, int width,
                                                              int height);

/// A picture as JFIF wants it: 4:2:0 in BT.601, full range, chroma sited in the centre of its four
/// pixels.
[[nodiscard]] std::expected<FramePtr, int> jfifFrame(const package::Picture& picture);

}  // namespace vesk::media
