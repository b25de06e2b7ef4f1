#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "app/ExportCommand.h"
#include "app/RunningProcess.h"
#include "app/SmallTake.h"
#include "media/VideoReader.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::makeSmallTake;
using test::RunningProcess;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

class ExportCommand : public testing::Test {
 protected:
  using Arguments = std::vector<std::string>;
  using Variables = RunningProcess::Variables;

  /// The real executable in a home of its own, whose library of recordings is empty.
  std::unique_ptr<RunningProcess> start(
      const Arguments& arguments, Variables variables = {},
      RunningProcess::Output output = RunningProcess::Output::pipe) const {
    Arguments command{VESK_EXECUTABLE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    variables.emplace_back("HOME", folder_.path().string());
    variables.emplace_back("XDG_CONFIG_HOME", (folder_ / "config").string());
    return std::make_unique<RunningProcess>(command, variables, output);
  }
  std::unique_ptr<RunningProcess> startExport(
      const fs::path& package, const Arguments& options = {},
      RunningProcess::Output output = RunningProcess::Output::pipe) const {
    Arguments arguments{"--export", output_, "--package", package};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return start(arguments, {}, output);
  }

  /// What stands behind the heading when the export of this package has failed as it should.
  std::string failureOf(const fs::path& package) const {
    const auto process = startExport(package);
    EXPECT_EQ(process->finish(), 1);
    EXPECT_FALSE(fs::exists(output_));
    const std::string& text = process->output();
    return text.substr(std::min(text.find("\n\n") + 2, text.size()));
  }

  void waitForOutputFile() const {
    while (!fs::exists(output_)) std::this_thread::sleep_for(1ms);
  }

  static std::string bytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  package::TemporaryDirectory folder_;
  fs::path output_ = folder_ / "movie.mp4";
};

TEST_F(ExportCommand, printsHeadingProgressAndSuccess) {
  const auto process = startExport(makeSmallTake(folder_, 2));
  EXPECT_EQ(process->finish(), 0);
  const std::string heading =
      "源  small.recording  128×72  2.00s\n段  1 个效果段\n出  " + output_.string() + "\n\n";
  std::string progress;
  for (int tenth = 1; tenth <= 10; ++tenth) {
    progress += "导出中 " + std::to_string(tenth * 10) + "%\n";
  }
  ASSERT_THAT(process->output(), StartsWith(heading + progress));
  EXPECT_THAT(process->output().substr((heading + progress).size()),
              MatchesRegex("\n✓ 导出完成\n  耗时 [0-9]+\\.[0-9]s（源时长 2\\.0s，[0-9]+\\.[0-9]× "
                           "实时）\n  体积 [0-9]+ (字节|KB)\n"));
  const auto movie = media::VideoReader::open(output_);
  ASSERT_TRUE(movie) << movie.error().message;
  EXPECT_NEAR(movie->info().frameRate, 60, 1e-9);
  EXPECT_NEAR(movie->info().duration, 2, 1e-3);
}

TEST_F(ExportCommand, theFrameRateIsTheRecordings) {
  ASSERT_EQ(startExport(makeSmallTake(folder_, 1, 24))->finish(), 0);
  const auto movie = media::VideoReader::open(output_);
  ASSERT_TRUE(movie) << movie.error().message;
  EXPECT_NEAR(movie->info().frameRate, 24, 1e-9);
}

TEST_F(ExportCommand, aTrailingSlashBelongsNotToTheName) {
  const auto process = startExport(makeSmallTake(folder_, 0.1).string() + "/");
  EXPECT_EQ(process->finish(), 0);
  EXPECT_THAT(process->output(), StartsWith("源  small.recording  "));
}

TEST_F(ExportCommand, theTildeStandsForTheHome) {
  const auto process =
      start({"--export", "~/movie.mp4", "--package", makeSmallTake(folder_, 0.1).string()});
  EXPECT_EQ(process->finish(), 0);
  EXPECT_THAT(process->output(), HasSubstr("\n出  " + output_.string() + "\n"));
  EXPECT_TRUE(fs::exists(output_));
}

TEST_F(ExportCommand, onATerminalOneLineIsRewritten) {
  const auto process = startExport(makeSmallTake(folder_, 2), {}, RunningProcess::Output::terminal);
  EXPECT_EQ(process->finish(), 0);
  EXPECT_THAT(process->output(), HasSubstr("\r导出中 █"));
  EXPECT_THAT(process->output(), HasSubstr("100%"));
  EXPECT_THAT(process->output(), HasSubstr("× 实时  剩余 0 秒"));
  EXPECT_THAT(process->output(), Not(HasSubstr("%\r\n"))) << "no plain lines";
  EXPECT_THAT(process->output(), HasSubstr("\r\n\r\n✓ 导出完成\r\n")) << "the line was left";
}

TEST_F(ExportCommand, onlyMarksCountWithoutAutomaticZooms) {
  for (const auto& [options, heading] :
       {std::pair<Arguments, const char*>{{}, "\n段  2 个效果段\n"},
        {{"--no-auto"}, "\n段  1 个效果段\n"}}) {
    const auto process = startExport(VESK_SAMPLE_TAKE, options);
    ASSERT_TRUE(process->waitFor("\n出  "));
    EXPECT_THAT(process->output(), HasSubstr(heading));
  }
}

TEST_F(ExportCommand, drawingEverythingGivesTheSameMovie) {
  const fs::path package = makeSmallTake(folder_, 2.5);
  ASSERT_EQ(startExport(package, {"--frame"})->finish(), 0);
  const std::string movie = bytesOf(output_);
  ASSERT_EQ(startExport(package, {"--frame", "--redraw-all"})->finish(), 0);
  EXPECT_TRUE(bytesOf(output_) == movie);
}

TEST_F(ExportCommand, anInterruptionCancelsIt) {
  const fs::path package = makeSmallTake(folder_, 3600);
  for (const int signal : {SIGINT, SIGTERM}) {
    for (const auto output : {RunningProcess::Output::pipe, RunningProcess::Output::terminal}) {
      const auto process = startExport(package, {}, output);
      waitForOutputFile();
      process->send(signal);
      EXPECT_EQ(process->finish(), 1);
      EXPECT_THAT(process->output(),
                  EndsWith(output == RunningProcess::Output::pipe ? "\n✗ 导出失败：已取消\n"
                                                                  : "\r\n✗ 导出失败：已取消\r\n"));
      EXPECT_FALSE(fs::exists(output_));
    }
  }
}

TEST_F(ExportCommand, withoutARecordingItSaysSo) {
  const auto process = start({"--export", output_});
  EXPECT_EQ(process->finish(), 1);
  EXPECT_EQ(process->output(), "找不到录制包\n");
}

TEST_F(ExportCommand, aPackageThatCannotBeReadIsRefused) {
  folder_.put("broken.recording/meta.json", "{ no JSON");
  for (const fs::path& package : {folder_ / "missing.recording", folder_ / "broken.recording"}) {
    const auto process = startExport(package);
    EXPECT_EQ(process->finish(), 1);
    EXPECT_EQ(process->output(), "读取录制包失败\n");
  }
}

TEST_F(ExportCommand, aMachineThatCannotDrawSaysSo) {
  const auto process = start({"--export", output_, "--package", makeSmallTake(folder_, 1).string()},
                             {{"__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent"}});
  EXPECT_EQ(process->finish(), 1);
  EXPECT_EQ(process->output(), "Metal 初始化失败\n");
  EXPECT_FALSE(fs::exists(output_));
}

TEST_F(ExportCommand, aDamagedScreenIsNamed) {
  const fs::path package = makeSmallTake(folder_, 1);
  const fs::path screen = package / "screen.mov";
  const std::string bytes = bytesOf(screen);
  const auto put = [&](std::string_view text) { folder_.put("small.recording/screen.mov", text); };
  put(std::string_view(bytes).substr(0, bytes.size() - 40));
  EXPECT_EQ(failureOf(package), "\n✗ 导出失败：读取失败：“screen.mov” 不完整或已损坏\n");
  put(std::string(5000, 'x'));
  EXPECT_EQ(failureOf(package), "\n✗ 导出失败：读取失败：“screen.mov” 不完整或已损坏\n");
  put("");
  EXPECT_THAT(failureOf(package), StartsWith("\n✗ 导出失败：读取失败：“screen.mov”"));
  fs::remove(screen);
  EXPECT_EQ(failureOf(package), "\n✗ 导出失败：读取失败：找不到文件 “screen.mov”\n");
}

TEST_F(ExportCommand, aMissingFolderIsNamed) {
  output_ = folder_ / "missing" / "movie.mp4";
  EXPECT_EQ(failureOf(makeSmallTake(folder_, 1)),
            "\n✗ 导出失败：写入失败：输出文件夹 “" + (folder_ / "missing").string() + "” 不存在\n");
}

// On a small disk of its own where this process may have one, else below a limit for files.
TEST_F(ExportCommand, aFullDiskIsNamedAndLeavesNothingBehind) {
  const fs::path disk = folder_ / "disk";
  fs::create_directory(disk);
  const char* script = R"(
    mount -t tmpfs -o size=128k none "$2" 2>/dev/null || { trap '' XFSZ; ulimit -f 128; }
    "$0" --export "$2/movie.mp4" --package "$1"
    code=$?
    ls -A "$2"
    exit $code)";
  for (const std::string prefix : {"unshare --mount", "unshare --map-root-user --mount", "env"}) {
    const std::string trial = prefix + " true 2>/dev/null";
    if (std::system(trial.c_str()) != 0) continue;  // NOLINT: a fixed command
    RunningProcess process({"sh", "-c", "exec " + prefix + R"( sh -c "$0" "$@")", script,
                            VESK_EXECUTABLE, VESK_SAMPLE_TAKE, disk});
    EXPECT_EQ(process.finish(), 1);
    EXPECT_THAT(process.output(),
                MatchesRegex("(.|\n)*\n✗ 导出失败：写入失败：(磁盘空间不足，“movie.mp4” 没有写完|"
                             "“movie.mp4” 超过了允许的文件大小，没有写完)\n"))
        << "and nothing that ls has to list";
    return;
  }
  FAIL() << "no shell";
}

}  // namespace
}  // namespace vesk::app
