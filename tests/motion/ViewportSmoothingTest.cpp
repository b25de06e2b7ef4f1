#include <gtest/gtest.h>

#include <cmath>

#include "motion/ViewportSmoothing.h"

namespace vesk::motion {
namespace {

std::vector<CameraPose> step(std::size_t count, std::size_t where) {
  std::vector<CameraPose> samples(count);
  for (std::size_t i = where; i < count; ++i) {
    samples[i].framing = 2;
    samples[i].target = {0.75F, 0.25F};
    samples[i].motionBlur = 0.35;
  }
  return samples;
}

TEST(ViewportSmoothing, aConstantPathStaysWhereItIs) {
  std::vector<CameraPose> samples(40);
  for (CameraPose& pose : samples) {
    pose.framing = 2;
    pose.target = {0.75F, 0.25F};
  }
  const auto smoothed = smoothViewports(samples);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    EXPECT_NEAR(smoothed[i].framing, 2, 1e-12);
    EXPECT_NEAR(smoothed[i].target.x, 0.75F, 1e-6F);
    EXPECT_NEAR(smoothed[i].target.y, 0.25F, 1e-6F);
  }
}

TEST(ViewportSmoothing, aStepBecomesARampOfThirteenSamples) {
  const auto smoothed = smoothViewports(step(60, 30));
  EXPECT_EQ(smoothed[23].framing, 1.0);
  EXPECT_GT(smoothed[24].framing, 1.0);
  EXPECT_LT(smoothed[35].framing, 2.0);
  EXPECT_NEAR(smoothed[36].framing, 2.0, 1e-12);
  // At the step, weights of 28/7 lie on the wide side … 6 + 5 + … + 1 sevenths of it before it.
  const double width = (21.0 / 7 * 1.0 + 28.0 / 7 * 0.5) / 7.0;
  EXPECT_NEAR(smoothed[30].framing, 1 / width, 1e-6);
}

TEST(ViewportSmoothing, theEndsAverageOverWhatThereIs) {
  const auto smoothed = smoothViewports(step(8, 4));
  double weights = 0;
  double width = 0;
  for (int j = 0; j <= 6; ++j) {
    weights += 1 - j / 7.0;
    width += (1 - j / 7.0) * (j < 4 ? 1.0 : 0.5);
  }
  EXPECT_NEAR(smoothed[0].framing, weights / width, 1e-6);
  EXPECT_EQ(smoothViewports(step(1, 0)).front().framing, 2.0);
  EXPECT_TRUE(smoothViewports({}).empty());
}

TEST(ViewportSmoothing, touchesNeitherBlurNorLensNorAngles) {
  auto samples = step(60, 30);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i].fov = 20 + static_cast<double>(i);
    samples[i].yaw = static_cast<double>(i);
  }
  const auto smoothed = smoothViewports(samples);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    EXPECT_EQ(smoothed[i].motionBlur, samples[i].motionBlur);
    EXPECT_EQ(smoothed[i].fov, samples[i].fov);
    EXPECT_EQ(smoothed[i].yaw, samples[i].yaw);
  }
}

}  // namespace
}  // namespace vesk::motion
