#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "app/VeskProcess.h"

namespace vesk::app {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr auto metaText = R"({"captureWidth":1920,"captureHeight":1080,"duration":12})";
constexpr auto marksText = R"({"t":0,"type":"move","x":0.3,"y":0.4}
{"t":2,"type":"zoomIn","x":0.3,"y":0.4}
{"t":5,"type":"zoomOut","x":0.3,"y":0.4}
)";

class DumpEffects : public ::testing::Test {
 protected:
  using Arguments = std::vector<std::string>;

  /// Writes a package and gives its path.
  std::string package(const std::string& name, const char* meta, const char* events) const {
    process_.home().put(name + "/meta.json", meta);
    return process_.home().put(name + "/events.jsonl", events).parent_path();
  }
  std::string markedPackage() const { return package("marked.recording", metaText, marksText); }
  std::string silentPackage() const { return package("silent.recording", metaText, ""); }

  test::VeskProcess::Result dump(const std::string& package, Arguments options = {}) const {
    Arguments arguments{"--dump-effects", "--package", package};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return process_.run(arguments);
  }
  nlohmann::json dumpJson(const std::string& package, Arguments options = {}) const {
    options.emplace_back("--json");
    return nlohmann::json::parse(dump(package, options).output);
  }

  test::VeskProcess process_;
};

}  // namespace

TEST_F(DumpEffects, reportsTheSampleTake) {
  const auto result = dump(VESK_SAMPLE_TAKE);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output, HasSubstr(" 运镜报告  tour.recording\n"));
  EXPECT_THAT(result.output, EndsWith("\n"));
}

TEST_F(DumpEffects, aRelativePathIsTakenAgainstTheWorkingDirectory) {
  markedPackage();
  EXPECT_THAT(dump("marked.recording").output, HasSubstr(" 运镜报告  marked.recording\n"));
}

TEST_F(DumpEffects, takesTheNewestPackageOfTheLibraryWhenNoneIsNamed) {
  package("library/20260101-080000.recording", metaText, marksText);
  package("library/20260102-080000.recording", metaText, marksText);
  for (const Arguments& arguments :
       {Arguments{"--dump-effects"}, Arguments{"--dump-effects", "--package"}}) {
    const auto result = process_.run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr(" 运镜报告  20260102-080000.recording\n"));
  }
}

TEST_F(DumpEffects, saysSoWhenThereIsNoPackage) {
  const auto result = process_.run({"--dump-effects"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "找不到录制包。先录一段，或用 --package <路径> 指定。\n");
}

TEST_F(DumpEffects, saysWhyAPackageCannotBeRead) {
  const std::vector<std::string> packages{
      process_.home() / "nowhere.recording",
      package("broken.recording", "{ 这不是 JSON", ""),
      package("huge.recording", R"({"duration":1e300})", marksText),
      package("late.recording", "{}", R"({"t":1e12,"type":"click","x":0.5,"y":0.5})"),
      "",
  };
  for (const std::string& path : packages) {
    for (const Arguments& options : {Arguments{}, Arguments{"--json", "--gate"}}) {
      const auto result = dump(path, options);
      EXPECT_EQ(result.exitCode, 1) << path;
      EXPECT_THAT(result.output, StartsWith("读取失败：")) << path;
      EXPECT_EQ(std::ranges::count(result.output, '\n'), 1) << result.output;
      EXPECT_GT(result.output.size(), std::string("读取失败：\n").size());
    }
  }
}

TEST_F(DumpEffects, onlyTheGateTurnsAFailureIntoAnExitCode) {
  EXPECT_EQ(dump(silentPackage()).exitCode, 0);
  EXPECT_EQ(dump(silentPackage(), {"--gate"}).exitCode, 1);
  EXPECT_EQ(dump(silentPackage(), {"--json"}).exitCode, 0);
  EXPECT_EQ(dump(silentPackage(), {"--json", "--gate"}).exitCode, 1);
  EXPECT_EQ(dump(markedPackage()).exitCode, 0);
  EXPECT_EQ(dump(markedPackage(), {"--gate"}).exitCode, 0);
}

TEST_F(DumpEffects, jsonIsOneObjectAndOneLineFeed) {
  const auto result = dump(VESK_SAMPLE_TAKE, {"--json", "--ease-profile"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output, StartsWith("{"));
  EXPECT_THAT(result.output, EndsWith("}\n"));
  EXPECT_EQ(std::ranges::count(result.output, '\n'), 1);
  const auto json = nlohmann::json::parse(result.output);
  EXPECT_EQ(json["criteria"].size(), 10U);
  EXPECT_GT(json["track"]["samples"].size(), 60U);
}

TEST_F(DumpEffects, theTrackIsFlatUnlessPerspectiveIsAskedFor) {
  const std::string path = markedPackage();
  const auto flat = dumpJson(path, {"--fov", "40", "--yaw", "30"})["track"]["samples"][200];
  EXPECT_EQ(flat["yaw"], 0);
  EXPECT_EQ(flat["fov"], 28);
  const auto tilted =
      dumpJson(path, {"--3d", "--fov", "40", "--yaw", "30", "--pitch", "10"})["track"]["samples"];
  EXPECT_NEAR(tilted[200]["yaw"].get<double>(), -26.88, 0.1);
  EXPECT_NEAR(tilted[200]["pitch"].get<double>(), -3.52, 0.02);
  EXPECT_EQ(tilted[200]["fov"], 40);
  EXPECT_EQ(tilted[200]["roll"], 0);
}

TEST_F(DumpEffects, valuesThatAreNoNumbersFallBackToTheDefaults) {
  const std::string path = markedPackage();
  const auto expected = dump(path, {"--3d", "--json"}).output;
  EXPECT_EQ(dump(path, {"--3d", "--json", "--yaw", "12x", "--pitch", " 6", "--fov", ""}).output,
            expected);
  EXPECT_EQ(dump(path, {"--json", "--yaw", "--3d"}).output, expected)
      << "the next flag is the value, and present all the same";
  EXPECT_NE(dump(path, {"--3d", "--json", "--yaw", "20"}).output, expected);
}

TEST_F(DumpEffects, anUnknownCurveIsIgnored) {
  const std::string path = markedPackage();
  EXPECT_THAT(dump(path, {"--ease", "电影"}).output, HasSubstr("▸ 过渡曲线：电影 —— "));
  EXPECT_THAT(dump(path, {"--ease", "cinema"}).output, HasSubstr("▸ 过渡曲线：平稳 —— "));
  EXPECT_THAT(dump(path, {"--ease"}).output, HasSubstr("▸ 过渡曲线：平稳 —— "));
}

TEST_F(DumpEffects, printsTheProfileOnDemand) {
  EXPECT_THAT(dump(markedPackage()).output, Not(HasSubstr("推镜曲线剖面")));
  EXPECT_THAT(dump(markedPackage(), {"--ease-profile"}).output,
              HasSubstr("▸ 推镜曲线剖面（平稳）  1.85→2.30s\n"));
}

TEST_F(DumpEffects, theYawOfTheTableIsThatOfTheOption) {
  EXPECT_THAT(dump(markedPackage(), {"--yaw", "-40"}).output, HasSubstr("-35.84°   左侧拍\n"))
      << "a magnitude: the side follows the mark";
}

TEST_F(DumpEffects, isTheSameOnEveryRun) {
  EXPECT_EQ(dump(VESK_SAMPLE_TAKE, {"--3d", "--json"}).output,
            dump(VESK_SAMPLE_TAKE, {"--3d", "--json"}).output);
}

}  // namespace vesk::app
