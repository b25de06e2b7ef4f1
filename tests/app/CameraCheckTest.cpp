#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "app/CameraCheck.h"

namespace vesk::app {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

/// Fits 16 to 9 into the canvas.
std::optional<PictureRect> fitted(int width, int height, bool framed) {
  const double room = framed ? 0.86 : 1.0;
  const double fittedHeight = std::min<double>(height, width * 9.0 / 16) * room;
  return PictureRect{.width = fittedHeight * 16 / 9, .height = fittedHeight};
}

}  // namespace

TEST(CameraCheck, holdsWithAFaithfulLayout) {
  const CheckOutcome outcome = checkCamera(fitted);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.text;
  EXPECT_THAT(outcome.text, HasSubstr("  ✓ 方向向量是单位向量\n"
                                      "  ✓ 正面机位精确铺满画幅\n"
                                      "  ✓ fov 与景别正交\n"
                                      "  ✓ clamped 幂等\n"
                                      "  ✓ 填满画幅不露背景\n"
                                      "  ✓ 填满解算全部收敛\n"
                                      "  ✓ 画面矩形不拉伸（预览＝导出）\n"));
  EXPECT_THAT(outcome.text, EndsWith("\n  ✓ 六条不变量全部成立\n"));
}

TEST(CameraCheck, failsOneLineWithoutALayout) {
  const CheckOutcome outcome = checkCamera({});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("  ✓ 填满解算全部收敛\n"
                                      "  ✗ 画面矩形不拉伸（预览＝导出）\n"
                                      "      Metal 或合成素材不可用\n"));
  EXPECT_THAT(outcome.text, EndsWith("  ✗ 1 项不符：\n      · 画面矩形不拉伸（预览＝导出）\n"));
}

TEST(CameraCheck, failsOneLineWhenTheLayoutKnowsNothing) {
  const CheckOutcome outcome = checkCamera([](int, int, bool) { return std::nullopt; });
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("      Metal 或合成素材不可用\n"));
}

TEST(CameraCheck, findsAStretchedPicture) {
  const CheckOutcome outcome = checkCamera([](int width, int height, bool framed) {
    auto rect = fitted(width, height, framed);
    if (framed && width == height) {
      rect->width += 1;
    }
    return rect;
  });
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("      1080×1080 有边框 宽高比相对偏差 1.077e-03\n"));
}

TEST(CameraCheck, asksForEveryCanvasWithAndWithoutAFrame) {
  int asked = 0;
  checkCamera([&](int width, int height, bool framed) {
    ++asked;
    return fitted(width, height, framed);
  });
  EXPECT_EQ(asked, 10);
}

}  // namespace vesk::app
