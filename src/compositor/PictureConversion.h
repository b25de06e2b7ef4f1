#pragma once

#include <cstddef>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>

#include "media/VideoFrame.h"

namespace vesk::compositor {

/// How the shader turns the planes of a decoded picture into RGB.
struct PictureConversion {
  glm::mat4 toRgb{1};         ///< from (Y, Cb, Cr, 1), each as its texture gives it in 0…1
  glm::vec2 chromaScale{0};   ///< chroma texture coordinates per luma pixel
  glm::vec2 chromaOffset{0};  ///< chroma texture coordinates of luma pixel (0, 0)
  bool operator==(const PictureConversion&) const = default;
};
static_assert(sizeof(PictureConversion) == 80);
static_assert(offsetof(PictureConversion, chromaScale) == 64);

/// By the equations of ITU-R BT.601, BT.709 and BT.2020 (non-constant luminance) for the picture's
/// matrix, range and bit depth, with its chroma where the picture says that it is sited.
PictureConversion pictureConversion(const media::VideoFrame& frame);

}  // namespace vesk::compositor
