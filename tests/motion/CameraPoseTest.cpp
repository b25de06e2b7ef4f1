#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/matrix.hpp>
#include <glm/trigonometric.hpp>
#include <limits>

#include "motion/CameraPose.h"
#include "motion/RandomTake.h"

namespace vesk::motion {
namespace {

constexpr double wide = 16.0 / 9;
constexpr CameraPose::Corners wholePicture{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};

CameraPose poseWith(double yaw, double pitch, double framing = 1, glm::vec2 target = {0.5F, 0.5F}) {
  CameraPose pose;
  pose.yaw = yaw;
  pose.pitch = pitch;
  pose.framing = framing;
  pose.target = target;
  return pose;
}

CameraPose randomPose(test::RandomTake& random) {
  CameraPose pose = poseWith(random.between(-60, 60), random.between(-50, 50),
                             random.between(0.5, 8), random.point() * 2.0F - 0.5F);
  pose.roll = random.between(-20, 20);
  pose.fov = random.between(8, 80);
  pose.motionBlur = random.between(0, 1);
  return pose;
}

glm::dvec3 eyeOf(const glm::dmat4& view) {
  return -(glm::transpose(glm::dmat3(view)) * glm::dvec3(view[3]));
}

double tiltOf(const CameraPose& pose) {
  return glm::degrees(
      std::acos(std::cos(glm::radians(pose.yaw)) * std::cos(glm::radians(pose.pitch))));
}

/// The corners by the inverse of the whole matrix.
std::optional<CameraPose::Corners> cornersByInverse(const CameraPose& pose, double distance,
                                                    double pictureAspect, double outputAspect) {
  const glm::dmat4 inverse = glm::inverse(projectionMatrix(pose.fov, outputAspect) *
                                          pose.viewMatrix(distance, pictureAspect));
  constexpr std::array<glm::dvec2, 4> clip{{{-1, 1}, {1, 1}, {1, -1}, {-1, -1}}};
  CameraPose::Corners corners;
  for (std::size_t i = 0; i < clip.size(); ++i) {
    const glm::dvec4 from = inverse * glm::dvec4(clip[i], 0, 1);
    const glm::dvec4 to = inverse * glm::dvec4(clip[i], 1, 1);
    if (std::abs(from.w) <= 1e-12 || std::abs(to.w) <= 1e-12) {
      return std::nullopt;
    }
    const glm::dvec3 a = glm::dvec3(from) / from.w;
    const glm::dvec3 b = glm::dvec3(to) / to.w;
    if (std::abs(b.z - a.z) <= 1e-12) {
      return std::nullopt;
    }
    const double s = -a.z / (b.z - a.z);
    if (!(s >= 0)) {
      return std::nullopt;
    }
    const glm::dvec3 hit = a + s * (b - a);
    corners[i] = {static_cast<float>(hit.x / pictureAspect) + 0.5F,
                  0.5F - static_cast<float>(hit.y)};
  }
  return corners;
}

}  // namespace

TEST(CameraPose, clampsEveryFieldToItsRange) {
  CameraPose pose;
  pose.target = {-3, 7};
  pose.yaw = -90;
  pose.pitch = 0;
  pose.roll = 40;
  pose.fov = 5;
  pose.framing = 100;
  pose.motionBlur = 17;
  const CameraPose clamped = pose.clamped(wide);
  EXPECT_EQ(clamped.target, glm::vec2(-0.5F, 1.5F));
  EXPECT_EQ(clamped.yaw, -45);
  EXPECT_EQ(clamped.roll, 15);
  EXPECT_EQ(clamped.fov, 12);
  EXPECT_EQ(clamped.framing, 6);
  EXPECT_EQ(clamped.motionBlur, 17);

  pose.pitch = 80;
  pose.yaw = 0;
  pose.roll = -40;
  pose.fov = 90;
  pose.framing = 0.2;
  const CameraPose other = pose.clamped(1.0);
  EXPECT_LE(other.pitch, 35);
  EXPECT_EQ(other.roll, -15);
  EXPECT_EQ(other.fov, 70);
  EXPECT_EQ(other.framing, 1);
}

TEST(CameraPose, theTiltLimitFollowsTheLensAndKeepsSixDegrees) {
  const double halfDiagonal = std::tan(glm::radians(14.0)) * std::sqrt(1 + (16.0 / 9) * (16.0 / 9));
  EXPECT_NEAR(maxTilt(28, wide), 82 - glm::degrees(std::atan(halfDiagonal)), 1e-12);
  EXPECT_GT(maxTilt(28, wide), maxTilt(45, wide));
  EXPECT_EQ(maxTilt(70, 8), 6);
}

TEST(CameraPose, clampingShortensATiltWithoutTurningIt) {
  CameraPose pose = poseWith(40, -30);
  pose.fov = 65;
  const CameraPose clamped = pose.clamped(wide);
  EXPECT_LT(clamped.yaw, 40);
  EXPECT_NEAR(clamped.pitch / clamped.yaw, -30.0 / 40, 1e-12);
  EXPECT_LE(tiltOf(clamped), maxTilt(65, wide) + 1e-9);
  EXPECT_NEAR(tiltOf(clamped), maxTilt(65, wide), 1e-6);
}

TEST(CameraPose, aTiltWithinTheLimitIsKept) {
  const CameraPose pose = poseWith(12, 6, 2, {0.3F, 0.7F});
  EXPECT_EQ(pose.clamped(wide), pose);
}

TEST(CameraPose, clampingTwiceChangesNothing) {
  test::RandomTake random(71);
  for (int i = 0; i < 500; ++i) {
    const double aspect = random.between(0.4, 4);
    const CameraPose once = randomPose(random).clamped(aspect);
    EXPECT_EQ(once.clamped(aspect), once);
  }
}

TEST(CameraPose, theEyeStandsOnTheSideThatTheAnglesSay) {
  EXPECT_GT(eyeOf(poseWith(20, 0).viewMatrix(3, wide)).x, 0) << "positive yaw: on the right";
  EXPECT_LT(eyeOf(poseWith(0, 20).viewMatrix(3, wide)).y, 0) << "positive pitch: below";
  const glm::dvec3 eye = eyeOf(poseWith(30, -14, 1, {0.25F, 0.75F}).viewMatrix(3, wide));
  EXPECT_NEAR(glm::distance(eye, glm::dvec3(-0.25 * wide, -0.25, 0)), 3, 1e-12);
}

TEST(CameraPose, rollTurnsSideTowardsUp) {
  CameraPose pose;
  pose.roll = 10;
  const glm::dmat4 view = pose.viewMatrix(3, wide);
  const double cosine = std::cos(glm::radians(10.0));
  const double sine = std::sin(glm::radians(10.0));
  EXPECT_NEAR(view[0][0], cosine, 1e-15);
  EXPECT_NEAR(view[1][0], sine, 1e-15);
  EXPECT_NEAR(view[0][1], -sine, 1e-15);
  EXPECT_NEAR(view[1][1], cosine, 1e-15);
  EXPECT_NEAR(view[2][2], 1, 1e-15);
  EXPECT_EQ(view[3][3], 1);
}

TEST(CameraPose, aSquareOnCameraSeesExactlyThePicture) {
  for (const double fov : {12.0, 18.0, 28.0, 45.0, 65.0, 70.0}) {
    CameraPose pose;
    pose.fov = fov;
    const auto solved = pose.clamped(wide).solve(wide, wide);
    ASSERT_TRUE(solved);
    EXPECT_EQ(solved->pose, pose);
    EXPECT_EQ(solved->pose.visibleCorners(solved->distance, wide, wide), wholePicture);
  }
}

TEST(CameraPose, theCornersAreThoseOfTheInvertedMatrix) {
  test::RandomTake random(72);
  int seen = 0;
  for (int i = 0; i < 2000; ++i) {
    const CameraPose pose = randomPose(random);
    const double distance = random.between(0.2, 12);
    const double pictureAspect = random.between(0.4, 4);
    const double outputAspect = random.between(0.4, 4);
    const auto expected = cornersByInverse(pose, distance, pictureAspect, outputAspect);
    const auto actual = pose.visibleCorners(distance, pictureAspect, outputAspect);
    ASSERT_EQ(actual.has_value(), expected.has_value()) << "pose " << i;
    if (!actual) {
      continue;
    }
    ++seen;
    for (std::size_t corner = 0; corner < actual->size(); ++corner) {
      // Far out on the plane the inverse itself is only good to some digits.
      const float size = std::max(1.0F, glm::length((*expected)[corner]));
      EXPECT_LT(glm::distance((*actual)[corner], (*expected)[corner]), 4e-7F * size)
          << "pose " << i;
    }
  }
  EXPECT_GT(seen, 1000);
  EXPECT_LT(seen, 2000) << "some poses look past the horizon";
}

TEST(CameraPose, aCornerThatLooksPastThePlaneGivesNoCorners) {
  CameraPose pose = poseWith(75, 0);
  pose.fov = 60;
  EXPECT_FALSE(pose.visibleCorners(3, wide, wide));
  EXPECT_FALSE(pose.maxFillDistance(wide, wide));
  EXPECT_FALSE(pose.solve(wide, wide));
}

TEST(CameraPose, aTargetThatIsNoNumberIsNeverSolved) {
  CameraPose pose;
  pose.target.x = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FALSE(pose.clamped(wide).visibleCorners(3, wide, wide));
  EXPECT_FALSE(pose.clamped(wide).solve(wide, wide));
}

TEST(CameraPose, lensAndFramingDoNotInterfere) {
  for (const double fov : {18.0, 28.0, 45.0, 65.0}) {
    for (const double framing : {1.0, 1.1, 1.5, 2.0, 3.3, 4.0, 6.0}) {
      CameraPose pose = poseWith(0, 0, framing);
      pose.fov = fov;
      const auto solved = pose.clamped(wide).solve(wide, wide);
      ASSERT_TRUE(solved);
      const double focalLength = projectionMatrix(fov, wide)[1][1];
      EXPECT_NEAR(focalLength / solved->distance / (2 * framing), 1, 1e-12);
    }
  }
}

TEST(CameraPose, theSolverWalksTheViewBackInsideThePicture) {
  const auto solved = poseWith(0, 0, 2, {0.02F, 0.98F}).solve(wide, wide);
  ASSERT_TRUE(solved);
  EXPECT_NEAR(solved->pose.target.x, 0.25, 1e-6);
  EXPECT_NEAR(solved->pose.target.y, 0.75, 1e-6);
}

TEST(CameraPose, aTiltedCameraNearTheEdgeIsShiftedInwards) {
  const auto solved = poseWith(20, 10, 3, {0.95F, 0.95F}).clamped(wide).solve(wide, wide);
  ASSERT_TRUE(solved);
  EXPECT_LT(solved->pose.target.x, 0.95F);
  EXPECT_LT(solved->pose.target.y, 0.95F);
  EXPECT_GE(margin(*solved->pose.visibleCorners(solved->distance, wide, wide)), -1e-4);
}

TEST(CameraPose, aTiltedCameraAtTheWholePictureComesCloser) {
  const CameraPose pose = poseWith(12, 6).clamped(wide);
  const auto solved = pose.solve(wide, wide);
  ASSERT_TRUE(solved);
  EXPECT_LT(solved->distance, 0.5 / std::tan(glm::radians(pose.fov) / 2));
  EXPECT_GE(margin(*solved->pose.visibleCorners(solved->distance, wide, wide)), 0);
}

TEST(CameraPose, everyClampedPoseThatLooksIntoThePictureFillsTheFrame) {
  test::RandomTake random(73);
  for (int i = 0; i < 1000; ++i) {
    CameraPose pose = randomPose(random);
    pose.target = 0.05F + 0.9F * random.point();
    const auto solved = pose.clamped(wide).solve(wide, wide);
    ASSERT_TRUE(solved) << "pose " << i;
    const auto corners = solved->pose.visibleCorners(solved->distance, wide, wide);
    ASSERT_TRUE(corners) << "pose " << i;
    EXPECT_GT(margin(*corners), -1e-4) << "pose " << i;
  }
}

TEST(CameraPose, theFillDistanceIsTheLargestThatFills) {
  const CameraPose pose = poseWith(15, -8, 1, {0.45F, 0.55F});
  const auto distance = pose.maxFillDistance(wide, wide);
  ASSERT_TRUE(distance);
  EXPECT_GE(margin(*pose.visibleCorners(*distance, wide, wide)), 0);
  EXPECT_LT(margin(*pose.visibleCorners(*distance * 1.0001, wide, wide)), 0);
}

TEST(CameraPose, theFillDistanceEndsAtForty) {
  CameraPose pose;
  pose.fov = 1;
  EXPECT_EQ(pose.maxFillDistance(wide, wide), 40);
}

TEST(CameraPose, noDistanceFillsAroundAPointOutsideThePicture) {
  EXPECT_FALSE(poseWith(0, 0, 1, {1.4F, 0.5F}).maxFillDistance(wide, wide));
}

TEST(CameraPose, marginIsTheDistanceFromTheNearestEdge) {
  EXPECT_EQ(margin(wholePicture), 0);
  EXPECT_EQ(margin({{{0.25F, 0.5F}, {0.5F, 0.5F}, {0.5F, 0.875F}, {0.25F, 0.875F}}}), 0.125);
  EXPECT_EQ(margin({{{0.25F, 0.5F}, {1.25F, 0.5F}, {1.25F, 0.75F}, {0.25F, 0.75F}}}), -0.25);
}

TEST(CameraPose, projectionPutsThePlanesOnTheEndsOfTheDepthRange) {
  const glm::dmat4 projection = projectionMatrix(40, wide);
  const auto depth = [&](double z) {
    const glm::dvec4 clip = projection * glm::dvec4(0, 0, z, 1);
    return clip.z / clip.w;
  };
  EXPECT_NEAR(depth(-nearPlane), -1, 1e-12);
  EXPECT_NEAR(depth(-farPlane), 1, 1e-12);
}

TEST(CameraPose, projectFindsTheCornersOfTheFrame) {
  const auto solved = CameraPose{}.solve(wide, wide);
  ASSERT_TRUE(solved);
  const glm::mat4 matrix(projectionMatrix(solved->pose.fov, wide) *
                         solved->pose.viewMatrix(solved->distance, wide) *
                         glm::scale(glm::dmat4(1.0), glm::dvec3(wide, 1, 1)));
  for (const glm::vec2 corner : wholePicture) {
    const auto seen = project(corner, matrix);
    ASSERT_TRUE(seen);
    EXPECT_LT(glm::distance(*seen, corner), 1e-5F);
  }
}

TEST(CameraPose, projectGivesNothingBehindTheCamera) {
  glm::mat4 matrix(1.0F);
  matrix[3][3] = 1e-6F;
  EXPECT_FALSE(project({0.5F, 0.5F}, matrix));
  matrix[3][3] = -1;
  EXPECT_FALSE(project({0.5F, 0.5F}, matrix));
  matrix[3][3] = 2e-6F;
  EXPECT_TRUE(project({0.5F, 0.5F}, matrix));
}

}  // namespace vesk::motion
