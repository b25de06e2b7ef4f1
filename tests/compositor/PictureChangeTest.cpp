#include <gtest/gtest.h>

#include <random>

#include "compositor/PictureChange.h"
#include "compositor/ReferenceConversion.h"
#include "compositor/TestPicture.h"

namespace vesk::compositor {
namespace {

using media::PixelLayout;

media::VideoFrame randomPicture(PixelLayout layout, int width, int height, unsigned seed) {
  std::mt19937 random(seed);
  const int maximum = (1 << media::bitsPerSample(layout)) - 1;
  std::uniform_int_distribution<int> value(0, maximum);
  return test::makePicture({.width = width, .height = height, .layout = layout},
                           [&](int, int, int) { return value(random); });
}

/// A copy with `count` samples of random planes changed.
media::VideoFrame edited(const media::VideoFrame& picture, int count, std::mt19937& random) {
  struct Edit {
    int plane;
    int x;
    int y;
  };
  std::vector<Edit> edits;
  for (int index = 0; index < count; ++index) {
    const auto plane = static_cast<int>(random() % 3);
    const media::VideoPlane& rows = picture.planes.at(static_cast<std::size_t>(plane));
    edits.push_back({plane, static_cast<int>(random() % static_cast<unsigned>(rows.width)),
                     static_cast<int>(random() % static_cast<unsigned>(rows.height))});
  }
  return test::withSamples(picture, [&](int plane, int x, int y) {
    for (const Edit& edit : edits) {
      if (edit.plane == plane && edit.x == x && edit.y == y) {
        return test::sampleAt(picture, plane, x, y) ^ 1;
      }
    }
    return -1;
  });
}

/// The luma pixels that the changed samples lie on, by looking at every one.
gpu::PixelRect touched(const media::VideoFrame& before, const media::VideoFrame& now) {
  gpu::PixelRect all;
  for (int plane = 0; plane < 3; ++plane) {
    const media::VideoPlane& rows = now.planes.at(static_cast<std::size_t>(plane));
    const int stepX = rows.width < now.width ? 2 : 1;
    const int stepY = rows.height < now.height ? 2 : 1;
    for (int y = 0; y < rows.height; ++y) {
      for (int x = 0; x < rows.width; ++x) {
        if (test::sampleAt(before, plane, x, y) == test::sampleAt(now, plane, x, y)) continue;
        all = all.united({x * stepX, y * stepY, stepX, stepY});
      }
    }
  }
  return all;
}

class PictureChange : public ::testing::TestWithParam<PixelLayout> {};
INSTANTIATE_TEST_SUITE_P(Layouts, PictureChange,
                         ::testing::Values(PixelLayout::yuv420p8, PixelLayout::yuv422p8,
                                           PixelLayout::yuv444p8, PixelLayout::yuv420p10,
                                           PixelLayout::yuv422p10, PixelLayout::yuv444p10));

TEST_P(PictureChange, equalPicturesHaveNone) {
  const media::VideoFrame picture = randomPicture(GetParam(), 90, 40, 1);
  EXPECT_TRUE(changedPixels(picture, picture).isEmpty()) << "the same one";
  const media::VideoFrame copy = test::withSamples(picture, [](int, int, int) { return -1; });
  EXPECT_TRUE(changedPixels(picture, copy).isEmpty()) << "one of the same samples";
}

TEST_P(PictureChange, coversWhatAPlainCompareFindsAndLittleMore) {
  std::mt19937 random(static_cast<unsigned>(GetParam()) + 7);
  // A width beyond several compare blocks, and odd sizes.
  for (const auto& [width, height] : {std::pair{301, 43}, {64, 20}, {17, 9}}) {
    const media::VideoFrame before = randomPicture(GetParam(), width, height, random());
    for (int round = 0; round < 40; ++round) {
      const media::VideoFrame now = edited(before, 1 + round % 4, random);
      const gpu::PixelRect expected = touched(before, now).intersection({0, 0, width, height});
      const gpu::PixelRect found = changedPixels(before, now);
      ASSERT_EQ(found.united(expected), found);
      ASSERT_EQ(found.intersection({0, 0, width, height}), found);
      // Bytes are compared in blocks of 64, and chroma spreads.
      constexpr int slack = 64 * 2 + 8;
      EXPECT_LE(found.width, expected.width + 2 * slack);
      EXPECT_LE(found.height, expected.height + 12);
    }
  }
}

TEST_P(PictureChange, noColourChangesOutside) {
  std::mt19937 random(static_cast<unsigned>(GetParam()) + 70);
  const media::VideoFrame before = randomPicture(GetParam(), 201, 31, 3);
  const test::DoubleImage colours = test::decoded(before);
  for (int round = 0; round < 12; ++round) {
    const media::VideoFrame now = edited(before, 2, random);
    const gpu::PixelRect changed = changedPixels(before, now);
    const test::DoubleImage coloursNow = test::decoded(now);
    for (int y = 0; y < now.height; ++y) {
      for (int x = 0; x < now.width; ++x) {
        if (!changed.intersection({x, y, 1, 1}).isEmpty()) continue;
        ASSERT_EQ(coloursNow.at(x, y), colours.at(x, y)) << x << ", " << y;
      }
    }
  }
}

TEST_P(PictureChange, startsAtEvenPixelsWhereChromaIsShared) {
  std::mt19937 random(5);
  const media::VideoFrame before = randomPicture(GetParam(), 300, 60, 4);
  for (int round = 0; round < 30; ++round) {
    const gpu::PixelRect changed = changedPixels(before, edited(before, 1, random));
    if (before.planes[1].width < before.width) {
      EXPECT_EQ(changed.x % 2, 0);
    }
    if (before.planes[1].height < before.height) {
      EXPECT_EQ(changed.y % 2, 0);
    }
  }
}

TEST(PictureChange, picturesOfDifferentKindsDifferEverywhere) {
  const media::VideoFrame picture = randomPicture(PixelLayout::yuv420p8, 32, 16, 1);
  const gpu::PixelRect whole{0, 0, 32, 16};
  const auto other = [&](auto change) {
    media::VideoFrame copy = test::withSamples(picture, [](int, int, int) { return -1; });
    change(copy);
    return copy;
  };
  using media::VideoFrame;
  EXPECT_EQ(
      changedPixels(picture, other([](VideoFrame& f) { f.matrix = media::ColorMatrix::bt601; })),
      whole);
  EXPECT_EQ(
      changedPixels(picture, other([](VideoFrame& f) { f.range = media::ColorRange::limited; })),
      whole);
  EXPECT_EQ(
      changedPixels(picture, other([](VideoFrame& f) { f.siting = media::ChromaSiting::centre; })),
      whole);
  EXPECT_EQ(changedPixels(randomPicture(PixelLayout::yuv444p8, 32, 16, 1), picture), whole);
  EXPECT_EQ(changedPixels(randomPicture(PixelLayout::yuv420p8, 64, 16, 1), picture), whole);
}

}  // namespace
}  // namespace vesk::compositor
