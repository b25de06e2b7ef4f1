#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/PairingCheck.h"
#include "app/VeskProcess.h"
#include "motion/ReportText.h"

namespace vesk::app {

using ::testing::EndsWith;
using ::testing::HasSubstr;

TEST(PairingCheck, passesItsEightCases) {
  const test::VeskProcess process;
  const auto result = process.run({"--test-pairing"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output, HasSubstr("  ✓ 正常配对\n"
                                       "  ✓ 连续放大（应平移而非新建段）\n"
                                       "  ✓ 推镜途中改主意（不该记成平移）\n"
                                       "  ✓ 忘按还原键\n"
                                       "  ✓ 孤立还原键（应忽略）\n"
                                       "  ✓ 还原后立刻再放大（不得重叠）\n"
                                       "  ✓ 还原后 0.1s 再放大（生来就重叠）\n"
                                       "  ✓ 两段独立\n"));
  EXPECT_THAT(result.output, EndsWith(motion::ruler() + "\n  ✓ 8/8 个用例通过\n"));
}

TEST(PairingCheck, runsAgainOnWhatTheLastRunLeftBehind) {
  const test::VeskProcess process;
  EXPECT_EQ(process.run({"--test-pairing"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(process.home() / "tqzn-test-2-12000.recording"));
  EXPECT_EQ(process.run({"--test-pairing"}).exitCode, 0);
}

TEST(PairingCheck, failsEveryCaseWhenNoPackageCanBeMade) {
  const test::VeskProcess process;
  const auto result = process.run({"--test-pairing"}, {.output = {}, .temporary = "/dev/null"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.output, HasSubstr("  ✗ 正常配对\n      无法创建合成包\n"));
  EXPECT_THAT(result.output, EndsWith("  ✗ 0/8 个用例通过\n"));
}

}  // namespace vesk::app
