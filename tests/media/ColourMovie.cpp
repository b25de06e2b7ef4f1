#include "media/ColourMovie.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "media/I420Picture.h"
#include "media/PictureConverter.h"
#include "media/TestMovie.h"
#include "media/VideoWriter.h"

namespace vesk::media {
namespace {

void require(bool holds, const char* what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

std::size_t quarterAt(int x, int y, int width, int height) {
  return (2 * y < height ? 0U : 2U) + (2 * x < width ? 0U : 1U);
}

I420Picture quarters(int width, int height, const Quarters& colours) {
  std::vector<std::uint8_t> bgra;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto [red, green, blue] = colours.at(quarterAt(x, y, width, height));
      bgra.insert(bgra.end(), {blue, green, red, 255});
    }
  }
  I420Picture picture(width, height);
  convertToI420({bgra.data(), std::ptrdiff_t{4} * width, width, height}, picture);
  return picture;
}

void appendBigEndian(std::string& bytes, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(value >> shift & 0xff);
  }
}

Colour colourAt(const package::Picture& picture, int x, int y) {
  const auto start =
      std::size_t{3} * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                        static_cast<std::size_t>(x));
  return {picture.pixels.at(start), picture.pixels.at(start + 1), picture.pixels.at(start + 2)};
}

}  // namespace

void makeColourMovie(const std::filesystem::path& file, int width, int height,
                     const Quarters& colours) {
  constexpr int fps = 10;
  auto writer = VideoWriter::open(
      file, {.width = width, .height = height, .fps = fps, .bitRate = 8'000'000, .threads = 1});
  require(writer.has_value(), "the colour movie does not open");
  const auto picture = quarters(width, height, colours);
  for (int index = 0; index < fps; ++index) {
    require(writer->write(picture, index).has_value(), "a picture is refused");
  }
  require(writer->finish().has_value(), "the colour movie is not completed");
}

void setDisplayMatrix(const std::filesystem::path& file, std::array<int, 4> matrix) {
  const auto [a, b, c, d] = matrix;
  std::string stored;
  for (const int element : {a, b, 0, c, d, 0, 0, 0}) {
    appendBigEndian(stored, static_cast<std::uint32_t>(element) << 16);
  }
  appendBigEndian(stored, std::uint32_t{1} << 30);
  auto bytes = bytesOf(file);
  const auto header = bytes.find("tkhd");
  require(header != bytes.npos, "no track header");
  constexpr std::size_t toMatrix = 4 + 40;
  bytes.replace(header + toMatrix, stored.size(), stored);
  writeBytes(file, bytes);
}

Quarters quartersOf(const package::Picture& picture) {
  const int left = picture.width / 4;
  const int right = picture.width * 3 / 4;
  const int top = picture.height / 4;
  const int bottom = picture.height * 3 / 4;
  return {colourAt(picture, left, top), colourAt(picture, right, top),
          colourAt(picture, left, bottom), colourAt(picture, right, bottom)};
}

int difference(const Quarters& a, const Quarters& b) {
  int largest = 0;
  for (std::size_t quarter = 0; quarter < a.size(); ++quarter) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
      largest = std::max(largest, std::abs(a.at(quarter).at(channel) - b.at(quarter).at(channel)));
    }
  }
  return largest;
}

}  // namespace vesk::media
