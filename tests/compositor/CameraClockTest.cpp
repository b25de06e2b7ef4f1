#include <gtest/gtest.h>

#include "compositor/CameraClock.h"

namespace vesk::compositor {
namespace {

package::RecordingMeta stamps(std::optional<double> screen, std::optional<double> camera,
                              std::optional<double> lit = std::nullopt) {
  package::RecordingMeta meta;
  meta.firstFramePTS = screen;
  meta.cameraFirstFramePTS = camera;
  meta.cameraFirstLitPTS = lit;
  return meta;
}

TEST(CameraClock, theOffsetTellsHowMuchLaterTheCameraStarted) {
  EXPECT_EQ(cameraOffset(stamps(100, 102)), 2);
  EXPECT_EQ(cameraOffset(stamps(100, 99.5)), -0.5);
}

TEST(CameraClock, withoutEitherStampThereIsNoOffset) {
  EXPECT_EQ(cameraOffset(stamps(std::nullopt, 102)), 0);
  EXPECT_EQ(cameraOffset(stamps(100, std::nullopt)), 0);
}

TEST(CameraClock, aLateCameraStandsAtItsStartUntilItBegins) {
  EXPECT_EQ(cameraTime(1, 2), 0);
  EXPECT_EQ(cameraTime(2, 2), 0);
  EXPECT_EQ(cameraTime(5, 2), 3);
}

TEST(CameraClock, aCameraThatBeganFirstIsUnderWayAtTheStart) {
  EXPECT_EQ(cameraTime(0, -0.5), 0.5);
}

TEST(CameraClock, theEndOfTheTakeIsTheEndOfTheCamerasFile) {
  // A camera that started 0.4 s late and stopped with the take holds 0.4 s less than it.
  constexpr double duration = 25;
  constexpr double offset = 0.4;
  EXPECT_NEAR(cameraTime(duration, offset), duration - offset, 1e-12);
}

TEST(CameraClock, theWindowWaitsForLight) {
  EXPECT_EQ(cameraVisibleFrom(stamps(100, 101, 101.5)), 1.5);
}

TEST(CameraClock, withoutALitPictureTheWindowWaitsForTheFirst) {
  EXPECT_EQ(cameraVisibleFrom(stamps(100, 101)), 1);
}

TEST(CameraClock, aCameraThatWasLitBeforeTheScreenShowsAtOnce) {
  EXPECT_EQ(cameraVisibleFrom(stamps(100, 98, 99)), 0);
}

TEST(CameraClock, withoutStampsTheWindowShowsAtOnce) {
  EXPECT_EQ(cameraVisibleFrom(stamps(std::nullopt, 101, 101.5)), 0);
  EXPECT_EQ(cameraVisibleFrom(stamps(100, std::nullopt)), 0);
}

}  // namespace
}  // namespace vesk::compositor
