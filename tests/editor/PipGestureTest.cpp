#include <gtest/gtest.h>

#include <limits>

#include "editor/PipGesture.h"

namespace vesk::editor {
namespace {

using package::PiPSettings;

constexpr StageSize wide{.width = 800, .height = 450};
constexpr StageSize tall{.width = 300, .height = 600};
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

PiPSettings circle() {
  return {.shape = PiPSettings::Shape::circle, .size = 0.2, .center = {0.5F, 0.5F}};
}

PiPSettings rounded() {
  PiPSettings pip = circle();
  pip.shape = PiPSettings::Shape::rounded;
  return pip;
}

void expectNear(StagePoint point, StagePoint expected) {
  EXPECT_NEAR(point.x, expected.x, 1e-9);
  EXPECT_NEAR(point.y, expected.y, 1e-9);
}

void expectNear(const StageRect& rect, const StageRect& expected) {
  EXPECT_NEAR(rect.x, expected.x, 1e-9);
  EXPECT_NEAR(rect.y, expected.y, 1e-9);
  EXPECT_NEAR(rect.width, expected.width, 1e-9);
  EXPECT_NEAR(rect.height, expected.height, 1e-9);
}

TEST(PipGesture, aCircleIsRoundOnAnyStage) {
  expectNear(PipGesture(circle(), wide).rect(), {.x = 355, .y = 180, .width = 90, .height = 90});
  expectNear(PipGesture(circle(), tall).rect(), {.x = 90, .y = 240, .width = 120, .height = 120});
}

TEST(PipGesture, aRoundedWindowIsSixteenToNineWhateverTheStage) {
  expectNear(PipGesture(rounded(), wide).rect(), {.x = 320, .y = 180, .width = 160, .height = 90});
  const StageRect onTall = PipGesture(rounded(), tall).rect();
  EXPECT_NEAR(onTall.width / onTall.height, 16.0 / 9.0, 1e-9);
}

TEST(PipGesture, theHandleLiesOnTheEdgeToTheBottomRight) {
  const double along = 45 * 0.7071067811865476;
  expectNear(PipGesture(circle(), wide).handle(), {.x = 400 + along, .y = 225 + along});
}

TEST(PipGesture, theHandleOfARoundedWindowTakesItsShareOfEachSide) {
  expectNear(PipGesture(rounded(), wide).handle(),
             {.x = 400 + 80 * 0.7071067811865476, .y = 225 + 45 * 0.7071067811865476});
}

TEST(PipGesture, aMovePutsTheMiddleAtThePointer) {
  const PiPSettings moved = PipGesture(circle(), wide).moved({.x = 200, .y = 90});
  EXPECT_EQ(moved.center, glm::vec2(0.25F, 0.2F));
  EXPECT_EQ(moved.size, 0.2);
}

TEST(PipGesture, aMoveIntoACornerStopsAtTheEdges) {
  const double halfWidth = 0.1 / (800.0 / 450.0);
  const PipGesture gesture{circle(), wide};
  const PiPSettings topLeft = gesture.moved({.x = -50, .y = -50});
  EXPECT_FLOAT_EQ(topLeft.center.x, static_cast<float>(halfWidth));
  EXPECT_FLOAT_EQ(topLeft.center.y, 0.1F);
  const PiPSettings bottomRight = gesture.moved({.x = 5000, .y = 5000});
  EXPECT_FLOAT_EQ(bottomRight.center.x, static_cast<float>(1 - halfWidth));
  EXPECT_FLOAT_EQ(bottomRight.center.y, 0.9F);
}

TEST(PipGesture, inACornerTheGraspedEdgesLieOnTheStagesEdges) {
  const PiPSettings moved = PipGesture(rounded(), wide).moved({.x = 9999, .y = 9999});
  const StageRect rect = PipGesture(moved, wide).rect();
  EXPECT_NEAR(rect.x + rect.width, wide.width, 1e-4);
  EXPECT_NEAR(rect.y + rect.height, wide.height, 1e-4);
}

TEST(PipGesture, aWindowWiderThanTheStageStandsInTheMiddle) {
  PiPSettings pip = rounded();
  pip.size = 0.45;
  const PiPSettings moved = PipGesture(pip, tall).moved({.x = 10, .y = 300});
  EXPECT_EQ(moved.center, glm::vec2(0.5F, 0.5F));
}

TEST(PipGesture, aResizeAtTheHandleKeepsTheSize) {
  for (const PiPSettings& pip : {circle(), rounded()}) {
    const PipGesture gesture{pip, wide};
    EXPECT_NEAR(gesture.resized(gesture.handle()).size, 0.2, 1e-9);
  }
}

TEST(PipGesture, theSizeFollowsTheDistanceFromTheMiddle) {
  const PipGesture gesture{circle(), wide};
  EXPECT_NEAR(gesture.resized({.x = 400, .y = 225 + 90}).size, 0.4, 1e-9);
  EXPECT_NEAR(gesture.resized({.x = 400 + 90, .y = 225}).size, 0.4, 1e-9);
  EXPECT_NEAR(gesture.resized({.x = 400 - 67.5, .y = 225}).size, 0.3, 1e-9);
}

TEST(PipGesture, theSizeHasLimitsWhateverTheDrag) {
  const PipGesture gesture{circle(), wide};
  EXPECT_EQ(gesture.resized({.x = 400, .y = 225}).size, 0.1);
  EXPECT_EQ(gesture.resized({.x = 1e12, .y = -1e12}).size, 0.45);
}

TEST(PipGesture, aResizeKeepsTheMiddle) {
  PiPSettings pip = circle();
  pip.center = {0.05F, 0.95F};
  EXPECT_EQ(PipGesture(pip, wide).resized({.x = 0, .y = 0}).center, pip.center);
}

TEST(PipGesture, aWindowWithoutASizeGrowsAgain) {
  PiPSettings pip = circle();
  pip.size = 0;
  const double size = PipGesture(pip, wide).resized({.x = 500, .y = 225}).size;
  EXPECT_GE(size, 0.1);
  EXPECT_LE(size, 0.45);
}

TEST(PipGesture, onAStageWithoutASurfaceNothingMoves) {
  for (const StageSize stage : {StageSize{}, StageSize{.width = 800}, StageSize{.height = 450}}) {
    const PipGesture gesture{circle(), stage};
    EXPECT_EQ(gesture.rect(), StageRect{});
    EXPECT_EQ(gesture.handle(), StagePoint{});
    EXPECT_EQ(gesture.moved({.x = 3, .y = 4}), circle());
    EXPECT_EQ(gesture.resized({.x = 3, .y = 4}), circle());
  }
}

TEST(PipGesture, aPointerThatIsNowhereMovesNothing) {
  const PipGesture gesture{circle(), wide};
  for (const StagePoint pointer : {StagePoint{.x = nan}, StagePoint{.y = infinity}}) {
    EXPECT_EQ(gesture.moved(pointer), circle());
    EXPECT_EQ(gesture.resized(pointer), circle());
  }
}

}  // namespace
}  // namespace vesk::editor
