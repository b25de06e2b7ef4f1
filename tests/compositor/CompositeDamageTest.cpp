#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "compositor/CompositeDamage.h"
#include "compositor/CompositeScenes.h"

namespace vesk::compositor {
namespace {

using ::testing::SizeIs;

constexpr int width = 1280;
constexpr int height = 720;

bool contains(const CompositeDamage& damage, int x, int y) {
  return damage.isEverything || std::ranges::any_of(damage.rects, [&](const gpu::PixelRect& rect) {
           return !rect.intersection({x, y, 1, 1}).isEmpty();
         });
}

double area(const CompositeDamage& damage) {
  double sum = 0;
  for (const gpu::PixelRect& rect : damage.rects) {
    sum += static_cast<double>(rect.width) * rect.height;
  }
  return sum;
}

CompositePlan planOf(const CompositeSettings& settings, const motion::CameraPose& pose,
                     const motion::CameraPose& previousPose) {
  const CompositeScene scene{
      .settings = settings, .pictureWidth = width, .pictureHeight = height, .cameraAspect = 1.5};
  return planComposite(scene, pose, previousPose, 0, {}, width, height);
}

CompositePlan plain() {
  CompositeSettings settings;
  settings.pip.enabled = false;
  return planOf(settings, {}, {});
}

CursorUniforms cursorAt(float x, float y) {
  return {.origin = {x, y}, .size = {0.02F, 0.04F}};
}

RippleInstance rippleAt(float x, float y, float progress) {
  return {.center = {x, y},
          .progress = progress,
          .maxRadius = 0.03F,
          .aspect = {1, static_cast<float>(width) / height}};
}

CompositeDamage damage(const CompositePlan& before, const CompositePlan& now,
                       const PictureChanges& changes = {}) {
  return compositeDamage(before, now, changes, width, height);
}

TEST(CompositeDamage, theSamePlanOverTheSamePicturesIsNone) {
  EXPECT_TRUE(damage(plain(), plain()).isNothing());
}

TEST(CompositeDamage, aMovedCursorTouchesItsOldAndItsNewPlace) {
  CompositePlan before = plain();
  CompositePlan now = plain();
  before.cursor = cursorAt(0.1F, 0.1F);
  now.cursor = cursorAt(0.7F, 0.8F);
  const CompositeDamage result = damage(before, now);
  EXPECT_THAT(result.rects, SizeIs(2));
  EXPECT_TRUE(contains(result, 130, 74));
  EXPECT_TRUE(contains(result, 900, 580));
  EXPECT_FALSE(contains(result, 500, 300));
}

TEST(CompositeDamage, placesThatMeetAreOneRectangle) {
  CompositePlan before = plain();
  CompositePlan now = plain();
  before.cursor = cursorAt(0.1F, 0.1F);
  now.cursor = cursorAt(0.105F, 0.11F);
  EXPECT_THAT(damage(before, now).rects, SizeIs(1));
}

TEST(CompositeDamage, aCursorThatComesOrGoesTouchesItsPlace) {
  CompositePlan with = plain();
  with.cursor = cursorAt(0.5F, 0.5F);
  EXPECT_TRUE(contains(damage(plain(), with), 645, 365));
  EXPECT_TRUE(contains(damage(with, plain()), 645, 365));
}

TEST(CompositeDamage, aGrowingRippleTouchesItsFinalCircle) {
  CompositePlan before = plain();
  CompositePlan now = plain();
  before.ripples = {rippleAt(0.5F, 0.5F, 0.2F)};
  now.ripples = {rippleAt(0.5F, 0.5F, 0.3F)};
  const CompositeDamage result = damage(before, now);
  EXPECT_THAT(result.rects, SizeIs(1));
  EXPECT_TRUE(contains(result, 640 + 21, 360));
  EXPECT_FALSE(contains(result, 640 + 40, 360));
}

TEST(CompositeDamage, nothingReachesBeyondTheCanvas) {
  CompositePlan now = plain();
  now.cursor = cursorAt(0.99F, -0.02F);
  now.ripples = {rippleAt(0, 1, 0.5F), rippleAt(5, 5, 0.5F)};
  for (const gpu::PixelRect& rect : damage(plain(), now).rects) {
    EXPECT_EQ(rect.intersection({0, 0, width, height}), rect);
    EXPECT_FALSE(rect.isEmpty());
  }
}

TEST(CompositeDamage, rectanglesAreDisjoint) {
  CompositePlan now = plain();
  for (int index = 0; index < 20; ++index) {
    now.ripples.push_back(rippleAt(0.05F * static_cast<float>(index), 0.3F, 0.5F));
    now.ripples.push_back(rippleAt(0.4F, 0.05F * static_cast<float>(index), 0.5F));
  }
  const CompositeDamage result = damage(plain(), now);
  for (std::size_t a = 0; a < result.rects.size(); ++a) {
    for (std::size_t b = a + 1; b < result.rects.size(); ++b) {
      EXPECT_TRUE(result.rects[a].intersection(result.rects[b]).isEmpty());
    }
  }
}

TEST(CompositeDamage, aChangedPartOfThePictureTouchesItsPlaceOnTheCanvas) {
  const PictureChanges changes{.screen = {100, 200, 30, 20}};
  const CompositeDamage result = damage(plain(), plain(), changes);
  ASSERT_THAT(result.rects, SizeIs(1));
  EXPECT_TRUE(contains(result, 100, 200));
  EXPECT_TRUE(contains(result, 129, 219));
  EXPECT_LT(area(result), 40 * 30);
}

TEST(CompositeDamage, theZoomEnlargesAChangedPart) {
  CompositeSettings settings;
  settings.pip.enabled = false;
  const motion::CameraPose pose = test::flatPose(4, {0.5F, 0.5F});
  const CompositePlan plan = planOf(settings, pose, pose);
  const CompositeDamage near = damage(plan, plan, {.screen = {640, 360, 10, 10}});
  EXPECT_TRUE(contains(near, 640, 360));
  EXPECT_TRUE(contains(near, 679, 399));
  EXPECT_TRUE(damage(plan, plan, {.screen = {0, 0, 10, 10}}).isNothing()) << "out of sight";
}

TEST(CompositeDamage, aPictureMadeSmallerOrBlurredChangesEverywhere) {
  CompositeSettings settings;
  settings.pip.enabled = false;
  const PictureChanges changes{.screen = {100, 200, 30, 20}};
  CompositePlan minified = plain();
  minified.frame->isMinified = true;
  EXPECT_TRUE(damage(minified, minified, changes).isEverything);
  motion::CameraPose pose = test::flatPose(2);
  pose.motionBlur = 1;
  const CompositePlan blurred = planOf(settings, pose, test::flatPose(1.8));
  ASSERT_GT(blurred.frame->sampling.taps, 1);
  EXPECT_TRUE(damage(blurred, blurred, changes).isEverything);
}

TEST(CompositeDamage, anotherCameraPoseChangesEverything) {
  CompositeSettings settings;
  EXPECT_TRUE(
      damage(planOf(settings, {}, {}), planOf(settings, test::flatPose(1.1), {})).isEverything);
}

TEST(CompositeDamage, whereThePictureComesFromMattersOnlyToItsBlur) {
  CompositeSettings settings;
  const motion::CameraPose pose = test::flatPose(2);
  const CompositePlan arriving = planOf(settings, pose, test::flatPose(1.9));
  const CompositePlan resting = planOf(settings, pose, pose);
  EXPECT_TRUE(damage(arriving, resting).isNothing()) << "sharp both times";
  motion::CameraPose blurred = pose;
  blurred.motionBlur = 1;
  EXPECT_TRUE(damage(planOf(settings, blurred, test::flatPose(1.9)), resting).isEverything);
}

TEST(CompositeDamage, anotherCanvasOrBackdropChangesEverything) {
  CompositePlan now = plain();
  now.width -= 2;
  EXPECT_TRUE(damage(plain(), now).isEverything);
  now = plain();
  now.backdrop = BackdropUniforms{};
  EXPECT_TRUE(damage(plain(), now).isEverything);
  now = plain();
  now.frame.reset();
  EXPECT_TRUE(damage(plain(), now).isEverything);
}

TEST(CompositeDamage, aNewCameraPictureTouchesTheWindow) {
  CompositeSettings settings;
  const CompositePlan plan = planOf(settings, {}, {});
  EXPECT_TRUE(damage(plan, plan).isNothing());
  const CompositeDamage result = damage(plan, plan, {.camera = true});
  EXPECT_TRUE(contains(result, 1081, 576));
  EXPECT_FALSE(contains(result, 300, 300));
  EXPECT_TRUE(damage(plain(), plain(), {.camera = true}).isNothing()) << "no window, no change";
}

TEST(CompositeDamage, aNewCameraPictureTouchesNothingBeyondTheWindowAndItsShadow) {
  constexpr double side = 0.25 * height;  // of a round window
  const auto touched = [](double shadow) {
    CompositeSettings settings;
    settings.pip.size = 0.25;
    settings.pip.center = {0.5F, 0.5F};
    settings.pip.shadow = shadow;
    const CompositePlan plan = planOf(settings, {}, {});
    return damage(plan, plan, {.camera = true});
  };
  const CompositeDamage bare = touched(0);
  ASSERT_THAT(bare.rects, SizeIs(1));
  EXPECT_NEAR(bare.rects[0].width, side, 8);
  EXPECT_NEAR(bare.rects[0].height, side, 8);
  const CompositeDamage shaded = touched(0.5);
  ASSERT_THAT(shaded.rects, SizeIs(1));
  EXPECT_GT(shaded.rects[0].height, side * 1.3);
  EXPECT_LT(shaded.rects[0].height, side * 1.4);
}

TEST(CompositeDamage, almostEverythingIsEverything) {
  EXPECT_TRUE(damage(plain(), plain(), {.screen = {0, 0, 1200, 700}}).isEverything);
  EXPECT_FALSE(damage(plain(), plain(), {.screen = {0, 0, 600, 700}}).isEverything);
}

TEST(CompositeDamage, withoutAFrameThePictureDoesNotMatter) {
  CompositePlan plan = plain();
  plan.frame.reset();
  EXPECT_TRUE(damage(plan, plan, {.screen = {0, 0, 1280, 720}}).isNothing());
}

}  // namespace
}  // namespace vesk::compositor
