#pragma once

#include <vector>

#include "media/LibavHandles.h"

namespace vesk::media {

/// Hands a frame (null: the end) to an encoder and appends the packets that are ready.
/// @return libav's code, negative for a failure.
[[nodiscard]] int encodeFrame(AVCodecContext& codec, const AVFrame* frame,
                              std::vector<PacketPtr>& ready);

}  // namespace vesk::media
