#pragma once

#include <functional>
#include <glm/vec2.hpp>
#include <glm/vec4.hpp>
#include <vector>

namespace vesk::compositor::test {

/// A grid of colours in double precision, row 0 the top.
struct DoubleImage {
  int width = 0;
  int height = 0;
  std::vector<glm::dvec4> pixels;  ///< red, green, blue, alpha in 0…1

  DoubleImage(int theWidth, int theHeight, const glm::dvec4& color = glm::dvec4(0));

  glm::dvec4& at(int x, int y) { return pixels[index(x, y)]; }
  const glm::dvec4& at(int x, int y) const { return pixels[index(x, y)]; }

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
  }
};

/// The nearest value that eight bits can hold, per channel.
glm::dvec4 inEightBits(const glm::dvec4& color);

/// A picture with its smaller levels, each half the size of the one before, and filtered reads.
/// Places are in 0…1 with (0, 0) the top-left corner; beyond the edges the edge goes on.
class ReferencePicture {
 public:
  explicit ReferencePicture(DoubleImage image);

  int width() const { return levels_.front().width; }
  int height() const { return levels_.front().height; }
  const DoubleImage& image() const { return levels_.front(); }

  /// Read where a pixel covers the parallelogram between two steps in 0…1: the longer of them, in
  /// texels, decides which two levels are mixed, and how.
  glm::dvec4 read(glm::dvec2 place, glm::dvec2 stepRight, glm::dvec2 stepDown) const;

 private:
  std::vector<DoubleImage> levels_;
};

}  // namespace vesk::compositor::test
