#include <algorithm>
#include <random>
#include <vector>

#include "gpu/Framebuffer.h"
#include "gpu/GpuTest.h"
#include "gpu/Texture.h"

namespace vesk::gpu {
namespace {

int bytesPerPixel(PixelFormat format) {
  switch (format) {
    case PixelFormat::r8:
      return 1;
    case PixelFormat::r16:
      return 2;
    case PixelFormat::bgra8:
      break;
  }
  return 4;
}

/// Random bytes for a picture whose rows lie `padding` bytes apart.
struct Rows {
  Rows(int theWidth, int theHeight, PixelFormat format, int padding, unsigned seed)
      : width(theWidth),
        height(theHeight),
        pixelBytes(bytesPerPixel(format)),
        stride(theWidth * pixelBytes + padding),
        bytes(static_cast<std::size_t>(stride * theHeight)) {
    std::mt19937 random(seed);
    std::ranges::generate(bytes, [&] { return static_cast<std::byte>(random() & 0xFFU); });
  }

  std::byte at(int x, int y, int byte) const {
    return bytes[static_cast<std::size_t>(y * stride + x * pixelBytes + byte)];
  }

  int width;
  int height;
  int pixelBytes;
  std::ptrdiff_t stride;
  std::vector<std::byte> bytes;
};

std::vector<std::byte> readBack(const Texture& texture) {
  const auto framebuffer = Framebuffer::create(texture);
  const int stride = texture.width() * bytesPerPixel(texture.format());
  std::vector<std::byte> pixels(static_cast<std::size_t>(stride * texture.height()));
  if (framebuffer) framebuffer->read(pixels.data(), stride, texture.bounds());
  return pixels;
}

std::vector<std::byte> packed(const Rows& rows) {
  std::vector<std::byte> pixels;
  for (int y = 0; y < rows.height; ++y) {
    for (int x = 0; x < rows.width; ++x) {
      for (int byte = 0; byte < rows.pixelBytes; ++byte) pixels.push_back(rows.at(x, y, byte));
    }
  }
  return pixels;
}

class TextureTest : public test::GpuTest {};
class TextureFormatTest : public test::GpuTest,
                          public ::testing::WithParamInterface<PixelFormat> {};
INSTANTIATE_TEST_SUITE_P(Formats, TextureFormatTest,
                         ::testing::Values(PixelFormat::r8, PixelFormat::r16, PixelFormat::bgra8));

TEST_P(TextureFormatTest, whatGoesUpComesBack) {
  // Widths that no alignment divides, and strides with and without room at the end of a row, also
  // such that are no whole number of pixels.
  for (const int padding : {0, 4, 8, 7}) {
    const Rows rows(37, 11, GetParam(), padding, 1);
    Texture texture = take(Texture::create(device(), rows.width, rows.height, GetParam()));
    texture.upload(rows.bytes.data(), rows.stride, texture.bounds());
    EXPECT_EQ(readBack(texture), packed(rows)) << "padding " << padding;
  }
}

TEST_P(TextureFormatTest, aPartGoesUpAloneFromItsPlaceInThePicture) {
  for (const int padding : {0, 5}) {
    const Rows first(33, 20, GetParam(), padding, 2);
    const Rows second(33, 20, GetParam(), padding, 3);
    Texture texture = take(Texture::create(device(), 33, 20, GetParam()));
    texture.upload(first.bytes.data(), first.stride, texture.bounds());
    const PixelRect part{5, 7, 13, 9};
    texture.upload(second.bytes.data(), second.stride, part);

    const std::vector<std::byte> a = packed(first);
    const std::vector<std::byte> b = packed(second);
    const std::vector<std::byte> result = readBack(texture);
    for (int y = 0; y < 20; ++y) {
      for (int x = 0; x < 33; ++x) {
        const bool inside = !part.intersection({x, y, 1, 1}).isEmpty();
        const auto index = static_cast<std::size_t>((y * 33 + x) * first.pixelBytes);
        ASSERT_EQ(result[index], (inside ? b : a)[index]) << x << ", " << y;
      }
    }
  }
}

TEST_F(TextureTest, bytesOfAnUpsideDownPictureGoUpRowByRow) {
  const Rows rows(8, 6, PixelFormat::bgra8, 0, 4);
  Texture texture = take(Texture::create(device(), 8, 6, PixelFormat::bgra8));
  const std::ptrdiff_t lastRow = rows.stride * 5;
  texture.upload(rows.bytes.data() + lastRow, -rows.stride, texture.bounds());
  const std::vector<std::byte> result = readBack(texture);
  for (int y = 0; y < 6; ++y) {
    EXPECT_EQ(result[static_cast<std::size_t>(y * 32)], rows.at(0, 5 - y, 0));
  }
}

TEST_F(TextureTest, anEmptyPartChangesNothing) {
  const Rows rows(8, 6, PixelFormat::r8, 0, 5);
  Texture texture = take(Texture::create(device(), 8, 6, PixelFormat::r8));
  texture.upload(rows.bytes.data(), rows.stride, texture.bounds());
  texture.upload(nullptr, 8, {3, 3, 0, 0});
  EXPECT_EQ(readBack(texture), packed(rows));
}

TEST_F(TextureTest, knowsItsMeasures) {
  const Texture texture =
      take(Texture::create(device(), 7, 5, PixelFormat::bgra8, Texture::Mips::full));
  EXPECT_EQ(texture.width(), 7);
  EXPECT_EQ(texture.height(), 5);
  EXPECT_EQ(texture.bounds(), (PixelRect{0, 0, 7, 5}));
  EXPECT_TRUE(texture.hasMips());
  EXPECT_FALSE(take(Texture::create(device(), 7, 5, PixelFormat::bgra8)).hasMips());
}

TEST_F(TextureTest, rebuildingLevelsLeavesThePictureItselfAlone) {
  const Rows rows(32, 17, PixelFormat::bgra8, 0, 6);
  Texture texture =
      take(Texture::create(device(), 32, 17, PixelFormat::bgra8, Texture::Mips::full));
  texture.upload(rows.bytes.data(), rows.stride, texture.bounds());
  texture.generateMips();
  EXPECT_EQ(readBack(texture), packed(rows));
}

TEST_F(TextureTest, sizesThatAreNotPossibleAreRefused) {
  const int limit = device().capabilities().maxTextureSize;
  for (const auto& [width, height] :
       {std::pair{0, 4}, {4, 0}, {-1, 4}, {limit + 1, 4}, {4, limit + 1}}) {
    const auto texture = Texture::create(device(), width, height, PixelFormat::bgra8);
    ASSERT_FALSE(texture.has_value()) << width << "x" << height;
    EXPECT_EQ(texture.error().kind, GpuError::Kind::unsupported);
    EXPECT_THAT(texture.error().message, ::testing::HasSubstr(std::to_string(width)));
  }
}

TEST_F(TextureTest, aMovedTextureIsTheSameOne) {
  Texture first = take(Texture::create(device(), 3, 2, PixelFormat::r8));
  const unsigned int handle = first.handle();
  Texture second = std::move(first);
  EXPECT_EQ(second.handle(), handle);
  Texture third = take(Texture::create(device(), 9, 9, PixelFormat::bgra8));
  third = std::move(second);
  EXPECT_EQ(third.handle(), handle);
  EXPECT_EQ(third.width(), 3);
  EXPECT_EQ(third.format(), PixelFormat::r8);
}

}  // namespace
}  // namespace vesk::gpu
