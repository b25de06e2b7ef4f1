#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "media/I420Picture.h"
#include "media/PicturePool.h"

namespace vesk::media {
namespace {

TEST(I420Picture, startsBlackInAlignedPlanes) {
  const I420Picture picture(1922, 1082);
  EXPECT_EQ(picture.width(), 1922);
  EXPECT_EQ(picture.height(), 1082);
  for (const auto& plane : picture.planes()) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plane.data) % 64, 0U);
    EXPECT_EQ(plane.stride % 64, 0);
    EXPECT_GE(plane.stride, plane.width);
  }
  EXPECT_EQ(picture.planes()[1].width, 961);
  EXPECT_EQ(picture.planes()[2].height, 541);
  EXPECT_EQ(picture.planes()[0].data[0], 16);
  EXPECT_EQ(picture.planes()[1].data[0], 128);
  EXPECT_EQ(picture.planes()[2].data[540 * picture.planes()[2].stride + 960], 128);
}

TEST(I420Picture, aCopyTakesEveryPixel) {
  I420Picture source(70, 50);
  std::fill_n(source.planes()[0].data, source.byteCount(), std::uint8_t{77});
  I420Picture target(70, 50);
  target.copyFrom(source);
  const auto* samples = target.planes()[0].data;
  EXPECT_TRUE(std::all_of(samples, samples + target.byteCount(), [](int v) { return v == 77; }));
}

TEST(PicturePool, lendsAPictureAgainOnlyAfterItsLastUserLetItGo) {
  PicturePool pool(64, 32);
  auto first = pool.acquire();
  const auto* memory = first->planes()[0].data;
  const auto held = first;
  first.reset();
  auto second = pool.acquire();
  EXPECT_NE(second->planes()[0].data, memory);
  second.reset();
  const auto* secondMemory = pool.acquire()->planes()[0].data;
  EXPECT_NE(secondMemory, memory);
}

TEST(PicturePool, usesTheSameMemoryAgain) {
  PicturePool pool(64, 32);
  const auto* memory = pool.acquire()->planes()[0].data;
  EXPECT_EQ(pool.acquire()->planes()[0].data, memory);
}

TEST(PicturePool, aLentPictureOutlivesThePool) {
  std::shared_ptr<I420Picture> picture;
  {
    PicturePool pool(64, 32);
    picture = pool.acquire();
  }
  EXPECT_EQ(picture->width(), 64);
  EXPECT_EQ(picture->planes()[0].data[0], 16);
}

}  // namespace
}  // namespace vesk::media
