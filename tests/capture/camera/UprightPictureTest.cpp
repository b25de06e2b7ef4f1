#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "capture/camera/UprightPicture.h"
#include "media/JpegPicture.h"

namespace vesk::capture::camera {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Colour = std::array<int, 3>;

/// Blue, green, red.
Colour pixel(const media::BgraView& view, int x, int y) {
  const std::uint8_t* at = view.data + y * view.stride + std::ptrdiff_t{4} * x;
  return {at[0], at[1], at[2]};
}

RawPicture raw(PixelLayout layout, PixelSize size, const RawPicture::Piece& piece) {
  return {.layout = layout, .size = size, .pieces = {&piece, 1}};
}

void expectRed(const std::optional<media::BgraView>& view, int x, int y) {
  ASSERT_TRUE(view);
  const auto [blue, green, red] = pixel(*view, x, y);
  EXPECT_NEAR(blue, 0, 3);
  EXPECT_NEAR(green, 0, 3);
  EXPECT_NEAR(red, 255, 3);
}

/// Two by two: 1 2 over 3 4, in the blue channel.
const Bytes fourPixels{1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0};

/// The blue channel of two by two pixels, row by row.
std::array<int, 4> blues(const media::BgraView& view) {
  return {pixel(view, 0, 0)[0], pixel(view, 1, 0)[0], pixel(view, 0, 1)[0], pixel(view, 1, 1)[0]};
}

std::array<int, 4> turned(Turn turn, std::ptrdiff_t stride = 8) {
  UprightPicture picture;
  const RawPicture::Piece piece{fourPixels, stride};
  const auto view = picture.convert(raw(PixelLayout::bgrx, {2, 2}, piece), turn);
  return blues(view.value());
}

TEST(UprightPicture, takesBgrxOverAsItIs) {
  UprightPicture picture;
  const RawPicture::Piece piece{fourPixels, 0};
  const auto view = picture.convert(raw(PixelLayout::bgrx, {2, 2}, piece));
  ASSERT_TRUE(view);
  EXPECT_EQ(view->width, 2);
  EXPECT_EQ(view->height, 2);
  EXPECT_EQ(blues(*view), (std::array{1, 2, 3, 4}));
}

TEST(UprightPicture, isOpaque) {
  UprightPicture picture;
  const RawPicture::Piece piece{fourPixels, 0};
  const auto view = picture.convert(raw(PixelLayout::bgrx, {2, 2}, piece));
  ASSERT_TRUE(view);
  for (const int index : {3, 7, 11, 15}) EXPECT_EQ(view->data[index], 255);
}

TEST(UprightPicture, leavesOutWhatLiesBetweenRows) {
  UprightPicture picture;
  const Bytes bytes{1, 2, 3, 0, 99, 99, 4, 5, 6, 0};
  const RawPicture::Piece piece{bytes, 6};
  const auto view = picture.convert(raw(PixelLayout::bgrx, {1, 2}, piece));
  ASSERT_TRUE(view);
  EXPECT_EQ(pixel(*view, 0, 1), (Colour{4, 5, 6}));
}

TEST(UprightPicture, swapsRedAndBlueOfRgbx) {
  UprightPicture picture;
  const Bytes bytes{1, 2, 3, 0};
  const RawPicture::Piece piece{bytes, 4};
  EXPECT_EQ(pixel(picture.convert(raw(PixelLayout::rgbx, {1, 1}, piece)).value(), 0, 0),
            (Colour{3, 2, 1}));
}

TEST(UprightPicture, readsYuy2) {
  UprightPicture picture;
  const Bytes bytes{81, 90, 81, 240};
  const RawPicture::Piece piece{bytes, 0};
  expectRed(picture.convert(raw(PixelLayout::yuy2, {2, 1}, piece)), 1, 0);
}

TEST(UprightPicture, readsNv12InOnePieceWithSpaceBehindRows) {
  UprightPicture picture;
  Bytes bytes(8 * 4, 81);
  for (int row = 0; row < 2; ++row) bytes.insert(bytes.end(), {90, 240, 90, 240, 0, 0, 0, 0});
  const RawPicture::Piece piece{bytes, 8};
  expectRed(picture.convert(raw(PixelLayout::nv12, {4, 4}, piece)), 3, 3);
}

TEST(UprightPicture, readsI420InOnePieceOrThree) {
  UprightPicture picture;
  const Bytes luma(16, 81);
  const Bytes cb(4, 90);
  const Bytes cr(4, 240);
  const std::array pieces{RawPicture::Piece{luma, 4}, RawPicture::Piece{cb, 2},
                          RawPicture::Piece{cr, 2}};
  expectRed(picture.convert({.layout = PixelLayout::i420, .size = {4, 4}, .pieces = pieces}), 3, 3);
  Bytes all = luma;
  all.insert(all.end(), cb.begin(), cb.end());
  all.insert(all.end(), cr.begin(), cr.end());
  const RawPicture::Piece piece{all, 0};
  expectRed(picture.convert(raw(PixelLayout::i420, {4, 4}, piece)), 3, 3);
}

TEST(UprightPicture, readsJpegFiles) {
  package::Picture red{.width = 16, .height = 8};
  for (int count = 0; count < 16 * 8; ++count) {
    red.pixels.insert(red.pixels.end(), {255, 0, 0});
  }
  const std::string file = media::encodeJpeg(red, 0.95).value();
  const Bytes bytes{file.begin(), file.end()};
  const RawPicture::Piece piece{bytes, 0};
  UprightPicture picture;
  expectRed(picture.convert(raw(PixelLayout::mjpeg, {16, 8}, piece)), 8, 4);
}

TEST(UprightPicture, isNothingOfADamagedJpegFile) {
  UprightPicture picture;
  const Bytes noise(1000, 0x5A);
  const RawPicture::Piece piece{noise, 0};
  EXPECT_FALSE(picture.convert(raw(PixelLayout::mjpeg, {16, 8}, piece)));
  const RawPicture::Piece nothing{{}, 0};
  EXPECT_FALSE(picture.convert(raw(PixelLayout::mjpeg, {16, 8}, nothing)));
}

TEST(UprightPicture, isNothingOfAFrameThatLacksBytes) {
  UprightPicture picture;
  const std::vector<std::uint8_t> bytes(23);
  const RawPicture::Piece piece{bytes, 0};
  for (const auto layout : {PixelLayout::bgrx, PixelLayout::rgbx, PixelLayout::nv12,
                            PixelLayout::i420, PixelLayout::yuy2}) {
    EXPECT_FALSE(picture.convert(raw(layout, {4, 4}, piece)));
  }
  const RawPicture::Piece narrow{fourPixels, 4};
  EXPECT_FALSE(picture.convert(raw(PixelLayout::bgrx, {2, 2}, narrow)));
  EXPECT_FALSE(picture.convert({.layout = PixelLayout::bgrx, .size = {2, 2}}));
  EXPECT_FALSE(picture.convert(raw(PixelLayout::bgrx, {0, 2}, piece)));
}

TEST(UprightPicture, turnsAPictureWhoseBottomRowComesFirst) {
  EXPECT_EQ(turned({}, -8), (std::array{3, 4, 1, 2}));
}

TEST(UprightPicture, turnsByQuartersWithTheClock) {
  EXPECT_EQ(turned({.quartersClockwise = 1}), (std::array{3, 1, 4, 2}));
  EXPECT_EQ(turned({.quartersClockwise = 2}), (std::array{4, 3, 2, 1}));
  EXPECT_EQ(turned({.quartersClockwise = 3}), (std::array{2, 4, 1, 3}));
}

TEST(UprightPicture, mirrorsWhatItHasTurned) {
  EXPECT_EQ(turned({.isMirrored = true}), (std::array{2, 1, 4, 3}));
  EXPECT_EQ(turned({.quartersClockwise = 1, .isMirrored = true}), (std::array{1, 3, 2, 4}));
}

TEST(UprightPicture, followsAChangeOfSize) {
  UprightPicture picture;
  const RawPicture::Piece piece{fourPixels, 0};
  ASSERT_TRUE(picture.convert(raw(PixelLayout::bgrx, {2, 2}, piece)));
  const auto view = picture.convert(raw(PixelLayout::bgrx, {4, 1}, piece));
  ASSERT_TRUE(view);
  EXPECT_EQ(view->width, 4);
  EXPECT_EQ(pixel(*view, 3, 0), (Colour{4, 0, 0}));
}

}  // namespace
}  // namespace vesk::capture::camera
