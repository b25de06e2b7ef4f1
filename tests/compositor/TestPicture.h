#pragma once

#include <functional>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include "media/VideoFrame.h"

// Decoded pictures that tests make themselves.
namespace vesk::compositor::test {

struct PictureFormat {
  int width = 0;
  int height = 0;
  media::PixelLayout layout = media::PixelLayout::yuv444p8;
  media::ColorMatrix matrix = media::ColorMatrix::bt709;
  media::ColorRange range = media::ColorRange::full;
  media::ChromaSiting siting = media::ChromaSiting::left;
};

/// A picture of the samples that `sample` gives for (plane, x, y). Rows lie apart by an odd number
/// of bytes more than they need where samples are bytes.
media::VideoFrame makePicture(const PictureFormat& format,
                              const std::function<int(int plane, int x, int y)>& sample);

/// A sample of a picture.
int sampleAt(const media::VideoFrame& picture, int plane, int x, int y);

/// A copy with other samples at the places that `sample` answers with 0 or above.
media::VideoFrame withSamples(const media::VideoFrame& picture,
                              const std::function<int(int plane, int x, int y)>& sample);

/// A full-range picture with chroma at every pixel.
/// @param color red, green and blue in 0…1 for a place in pixels, the centre of the first at 0.5.
media::VideoFrame makeRgbPicture(int width, int height,
                                 const std::function<glm::dvec3(glm::dvec2 place)>& color);

}  // namespace vesk::compositor::test
