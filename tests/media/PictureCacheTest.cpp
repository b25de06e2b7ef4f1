#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "media/PictureCache.h"

namespace vesk::media {
namespace {

VideoFrame pictureAt(double pts) {
  return {.pts = pts, .storage = std::make_shared<int>()};
}

/// Pictures 0, 1, 2… seconds, each of which is known to stand until the next.
PictureCache cacheOf(int count, PictureCache::Capacity capacity = {.total = 100, .after = 50}) {
  PictureCache cache(capacity);
  for (int index = 0; index < count; ++index) {
    cache.add(pictureAt(index));
    cache.setEnd(index, index + 1);
  }
  return cache;
}

double standing(const PictureCache& cache, double time) {
  const auto* entry = cache.standingAt(time);
  return entry != nullptr ? entry->picture.pts : -1;
}

TEST(PictureCache, aPictureStandsFromItsTimeUntilItsEnd) {
  const PictureCache cache = cacheOf(3);
  EXPECT_EQ(standing(cache, 1), 1);
  EXPECT_EQ(standing(cache, 1.99), 1);
  EXPECT_EQ(standing(cache, 2), 2);
  EXPECT_EQ(standing(cache, 3), -1);
  EXPECT_EQ(standing(cache, -0.1), -1);
}

TEST(PictureCache, aPictureWhoseEndIsUnknownIsNotKnownToStand) {
  PictureCache cache = cacheOf(1);
  cache.add(pictureAt(1));
  EXPECT_EQ(standing(cache, 1), -1);
  cache.setEnd(1, std::numeric_limits<double>::infinity());
  EXPECT_EQ(standing(cache, 1e300), 1);
}

TEST(PictureCache, aPictureKnownAlreadyStays) {
  PictureCache cache = cacheOf(2);
  const VideoFrame known = cache.standingAt(1)->picture;
  cache.add(pictureAt(1));
  EXPECT_TRUE(cache.standingAt(1)->picture.isSamePictureAs(known));
  EXPECT_EQ(standing(cache, 1.5), 1);
}

TEST(PictureCache, ofTwoPicturesOfOneTimeTheLaterStands) {
  PictureCache cache = cacheOf(1);
  cache.add(pictureAt(1));
  cache.setEnd(1, 1);
  const VideoFrame later = pictureAt(1);
  cache.add(later);
  cache.setEnd(1, 2);
  EXPECT_TRUE(cache.standingAt(1)->picture.isSamePictureAs(later));
}

TEST(PictureCache, anEndForAPictureThatIsNotHereIsPassedOver) {
  PictureCache cache = cacheOf(2);
  cache.setEnd(0.5, 9);
  EXPECT_EQ(standing(cache, 0.7), 0);
  EXPECT_EQ(standing(cache, 5), -1);
}

TEST(PictureCache, theNearestPictureMayLieOnEitherSide) {
  PictureCache cache({.total = 10, .after = 5});
  EXPECT_EQ(cache.nearestTo(1), nullptr);
  cache.add(pictureAt(0));
  cache.setEnd(0, 2);
  cache.add(pictureAt(6));
  EXPECT_EQ(cache.nearestTo(-1)->picture.pts, 0);
  EXPECT_EQ(cache.nearestTo(3)->picture.pts, 0) << "it stands until 2";
  EXPECT_EQ(cache.nearestTo(4.1)->picture.pts, 6);
  EXPECT_EQ(cache.nearestTo(99)->picture.pts, 6);
}

TEST(PictureCache, aRunEndsWhereAPictureIsMissing) {
  PictureCache cache = cacheOf(4);
  for (const double later : {6.0, 7.0}) {
    cache.add(pictureAt(later));
    cache.setEnd(later, later + 1);
  }
  const auto early = cache.runAround(1.5);
  EXPECT_EQ(early.before, 1U);
  EXPECT_EQ(early.after, 2U);
  EXPECT_EQ(early.begin, 0);
  EXPECT_EQ(early.end, 4);
  const auto late = cache.runAround(7);
  EXPECT_EQ(late.before, 1U);
  EXPECT_EQ(late.after, 0U);
  EXPECT_EQ(late.begin, 6);
  EXPECT_EQ(late.end, 8);
}

TEST(PictureCache, whatLiesFarAheadOfThePlayheadGoesFirst) {
  PictureCache cache = cacheOf(20, {.total = 8, .after = 3});
  cache.trim(10.5);
  EXPECT_EQ(standing(cache, 5), -1);
  EXPECT_EQ(standing(cache, 6), 6);
  EXPECT_EQ(standing(cache, 13), 13);
  EXPECT_EQ(standing(cache, 14), -1);
}

TEST(PictureCache, thePicturesAheadMayTakeTheRoomOfNoneBefore) {
  PictureCache cache = cacheOf(20, {.total = 8, .after = 3});
  cache.trim(-1);
  EXPECT_EQ(standing(cache, 7), 7);
  EXPECT_EQ(standing(cache, 8), -1);
}

TEST(PictureCache, whatFitsStays) {
  PictureCache cache = cacheOf(8, {.total = 8, .after = 1});
  cache.trim(0);
  EXPECT_EQ(standing(cache, 7), 7);
}

}  // namespace
}  // namespace vesk::media
