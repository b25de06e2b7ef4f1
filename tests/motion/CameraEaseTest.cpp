#include <gtest/gtest.h>

#include <cmath>

#include "motion/CameraEase.h"

namespace vesk::motion {
namespace {

TEST(CameraEase, rawValuesReadBackAndNothingElseDoes) {
  EXPECT_EQ(allCameraEases.size(), 5U);
  for (const CameraEase ease : allCameraEases) {
    EXPECT_EQ(cameraEase(rawValue(ease)), ease);
    EXPECT_FALSE(helpLine(ease).empty());
  }
  EXPECT_EQ(rawValue(CameraEase::smooth), "平稳");
  EXPECT_EQ(rawValue(CameraEase::snappy), "干脆");
  EXPECT_EQ(rawValue(CameraEase::cinema), "电影");
  EXPECT_EQ(rawValue(CameraEase::springy), "轻弹");
  EXPECT_EQ(rawValue(CameraEase::linear), "匀速");
  EXPECT_EQ(helpLine(CameraEase::smooth), "起收对称，什么场合都不出错");
  EXPECT_EQ(helpLine(CameraEase::snappy), "起步快、收尾长，短推镜最利落");
  EXPECT_EQ(helpLine(CameraEase::cinema), "起收都慢，大幅运镜显得从容");
  EXPECT_EQ(helpLine(CameraEase::springy), "到位时轻微回弹，教学段别用");
  EXPECT_EQ(helpLine(CameraEase::linear), "匀速，机械感");
  EXPECT_EQ(cameraEase(""), std::nullopt);
  EXPECT_EQ(cameraEase("smooth"), std::nullopt);
}

TEST(CameraEase, isExactlyZeroUpToTheStartAndExactlyOneFromTheEnd) {
  for (const CameraEase ease : allCameraEases) {
    EXPECT_EQ(value(ease, 0), 0.0) << rawValue(ease);
    EXPECT_EQ(value(ease, -0.0), 0.0) << rawValue(ease);
    EXPECT_EQ(value(ease, -1e-300), 0.0) << rawValue(ease);
    EXPECT_EQ(value(ease, -1e9), 0.0) << rawValue(ease);
    EXPECT_EQ(value(ease, 1), 1.0) << rawValue(ease);
    EXPECT_EQ(value(ease, std::nextafter(1.0, 2.0)), 1.0) << rawValue(ease);
    EXPECT_EQ(value(ease, 1e9), 1.0) << rawValue(ease);
  }
}

TEST(CameraEase, theSymmetricCurvesPassThroughTheMiddle) {
  EXPECT_DOUBLE_EQ(value(CameraEase::smooth, 0.5), 0.5);
  EXPECT_DOUBLE_EQ(value(CameraEase::cinema, 0.5), 0.5);
  EXPECT_DOUBLE_EQ(value(CameraEase::linear, 0.5), 0.5);
  for (double t = 0.05; t < 0.5; t += 0.05) {
    EXPECT_NEAR(value(CameraEase::smooth, t), 1 - value(CameraEase::smooth, 1 - t), 1e-9) << t;
  }
}

TEST(CameraEase, snappyStartsFast) {
  EXPECT_GT(value(CameraEase::snappy, 0.1), 0.35);
}

TEST(CameraEase, springyOvershootsAndSettles) {
  EXPECT_DOUBLE_EQ(value(CameraEase::springy, 0.75), 1.044375);
  EXPECT_GT(value(CameraEase::springy, 0.9), 1.0);
  EXPECT_LT(value(CameraEase::springy, 0.2), 0.7);
}

TEST(CameraEase, onlySpringyExceedsOneAndTheOthersNeverTurnBack) {
  for (const CameraEase ease : allCameraEases) {
    if (ease == CameraEase::springy) {
      continue;
    }
    double last = 0;
    for (int i = 1; i <= 1000; ++i) {
      const double now = value(ease, i / 1000.0);
      EXPECT_LE(now, 1.0) << rawValue(ease) << i;
      EXPECT_GE(now, last - 1e-12) << rawValue(ease) << i;
      last = now;
    }
  }
}

TEST(CameraEase, linearIsTheIdentityToTheAccuracyOfTheSolver) {
  for (int i = 1; i < 1000; ++i) {
    EXPECT_NEAR(value(CameraEase::linear, i / 1000.0), i / 1000.0, 1e-6) << i;
  }
}

/// The point of the curve found by bisection, which needs no slope.
double bisected(double x1, double y1, double x2, double t) {
  double low = 0;
  double high = 1;
  for (int i = 0; i < 100; ++i) {
    const double s = (low + high) / 2;
    const double x = 3 * (1 - s) * (1 - s) * s * x1 + 3 * (1 - s) * s * s * x2 + s * s * s;
    (x < t ? low : high) = s;
  }
  const double s = low;
  return 3 * (1 - s) * (1 - s) * s * y1 + 3 * (1 - s) * s * s + s * s * s;
}

TEST(CameraEase, theCurvesAreTheBeziersOfTheirControlPoints) {
  for (int i = 1; i < 200; ++i) {
    const double t = i / 200.0;
    EXPECT_NEAR(value(CameraEase::smooth, t), bisected(0.65, 0, 0.35, t), 1e-6) << t;
    EXPECT_NEAR(value(CameraEase::snappy, t), bisected(0.16, 0.9, 0.2, t), 1e-6) << t;
    EXPECT_NEAR(value(CameraEase::cinema, t), bisected(0.83, 0, 0.17, t), 1e-3) << t;
  }
}

}  // namespace
}  // namespace vesk::motion
