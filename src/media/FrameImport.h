#pragma once

#include <expected>

#include "media/LibavHandles.h"
#include "media/VideoFrame.h"

namespace vesk::media {

/// Turns decoded frames into pictures of one size. What a VideoFrame can express passes without a
/// copy; other formats and sizes are converted to 8-bit 4:2:0 in the same range (RGB to BT.709
/// limited range).
class FrameImport {
 public:
  FrameImport(int width, int height) : width_(width), height_(height) {}

  /// Fails with a libav code.
  [[nodiscard]] std::expected<VideoFrame, int> import(const AVFrame& frame, double pts);

 private:
  [[nodiscard]] std::expected<FramePtr, int> converted(const AVFrame& frame);

  int width_;
  int height_;
  ScalerPtr scaler_;
};

}  // namespace vesk::media
