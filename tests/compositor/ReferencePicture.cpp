#include "compositor/ReferencePicture.h"

#include <algorithm>
#include <cmath>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <utility>

namespace vesk::compositor::test {
namespace {

glm::dvec4 linear(const DoubleImage& image, glm::dvec2 place) {
  const glm::dvec2 texel = place * glm::dvec2(image.width, image.height) - 0.5;
  const glm::dvec2 first = glm::floor(texel);
  const glm::dvec2 part = texel - first;
  const auto at = [&](int dx, int dy) {
    return image.at(std::clamp(static_cast<int>(first.x) + dx, 0, image.width - 1),
                    std::clamp(static_cast<int>(first.y) + dy, 0, image.height - 1));
  };
  const glm::dvec4 above = at(0, 0) * (1 - part.x) + at(1, 0) * part.x;
  const glm::dvec4 below = at(0, 1) * (1 - part.x) + at(1, 1) * part.x;
  return above * (1 - part.y) + below * part.y;
}

DoubleImage halved(const DoubleImage& image) {
  DoubleImage half(std::max(image.width / 2, 1), std::max(image.height / 2, 1));
  for (int y = 0; y < half.height; ++y) {
    for (int x = 0; x < half.width; ++x) {
      const glm::dvec2 place((x + 0.5) / half.width, (y + 0.5) / half.height);
      half.at(x, y) = inEightBits(linear(image, place));
    }
  }
  return half;
}

}  // namespace

DoubleImage::DoubleImage(int theWidth, int theHeight, const glm::dvec4& color)
    : width(theWidth),
      height(theHeight),
      pixels(static_cast<std::size_t>(theWidth) * static_cast<std::size_t>(theHeight), color) {}

glm::dvec4 inEightBits(const glm::dvec4& color) {
  return glm::floor(glm::clamp(color, 0.0, 1.0) * 255.0 + 0.5) / 255.0;
}

ReferencePicture::ReferencePicture(DoubleImage image) {
  levels_.push_back(std::move(image));
  while (levels_.back().width > 1 || levels_.back().height > 1) {
    levels_.push_back(halved(levels_.back()));
  }
}

glm::dvec4 ReferencePicture::read(glm::dvec2 place, glm::dvec2 stepRight,
                                  glm::dvec2 stepDown) const {
  const glm::dvec2 size(width(), height());
  const double texels = std::max(glm::length(stepRight * size), glm::length(stepDown * size));
  const double last = static_cast<double>(levels_.size() - 1);
  const double level = std::clamp(std::log2(std::max(texels, 1e-9)), 0.0, last);
  const auto finer = static_cast<std::size_t>(level);
  const std::size_t coarser = std::min(finer + 1, levels_.size() - 1);
  const double part = level - std::floor(level);
  return linear(levels_[finer], place) * (1 - part) + linear(levels_[coarser], place) * part;
}

}  // namespace vesk::compositor::test
