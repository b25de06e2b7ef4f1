#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "app/VeskCLI.h"
#include "app/VeskProcess.h"

namespace vesk::app {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(VeskCLI, looksForItsCommandsInAFixedOrder) {
  std::vector<std::string_view> flags;
  for (const Command& command : commands()) {
    flags.push_back(command.flag);
  }
  EXPECT_THAT(
      flags, ElementsAre("--test-pairing", "--test-edit-roundtrip", "--test-decode-resilience",
                         "--test-camera", "--test-window-frames", "--test-export-clone",
                         "--diag-camera-sync", "--test-persist", "--camera-check", "--smoke-record",
                         "--diag-static-tail", "--diag-hotkeys", "--diag-window-resize", "--export",
                         "--dump-effects"));
}

TEST(VeskCLI, theFirstCommandOfTheOrderWinsWhereverItStands) {
  const test::VeskProcess process;
  const auto result =
      process.run({"--dump-effects", "--export", "movie.mp4", "--test-camera", "--test-pairing"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, HasSubstr("手动标记配对自检"));
  EXPECT_THAT(result.output, Not(HasSubstr("透视相机自检")));
  EXPECT_FALSE(std::filesystem::exists(process.home() / "movie.mp4"));
}

TEST(VeskCLI, anExportWithoutItsPathFallsThroughToTheNextCommand) {
  const test::VeskProcess process;
  const auto result = process.run({"--dump-effects", "--package", VESK_SAMPLE_TAKE, "--export"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, HasSubstr("运镜报告  tour.recording"));
}

TEST(VeskCLI, anExportWithoutItsPathAloneIsNoCommand) {
  const test::VeskProcess process;
  const auto result = process.run({"--export"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
}

TEST(VeskCLI, withoutACommandAndADesktopItSaysSoOnStandardErrorOnly) {
  const test::VeskProcess process;
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"--no-such-flag"}, {"--dump-effect"}, {"dump-effects"}}) {
    const auto result = process.run(arguments);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("命令行"));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1);
  }
}

TEST(VeskCLI, unknownArgumentsBesideACommandAreIgnored) {
  const test::VeskProcess process;
  EXPECT_EQ(process.run({"--bogus", "--test-pairing", "x", "--seek=3"}).exitCode, 0);
}

TEST(VeskCLI, outputThatCannotBeWrittenIsAFailure) {
  const test::VeskProcess process;
  const auto result = process.run({"--test-pairing"}, {.output = "/dev/full", .temporary = {}});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("无法写出结果"));
}

}  // namespace vesk::app
