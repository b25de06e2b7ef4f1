// The real program, in a process of its own, whose take is cut short.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/RunningProcess.h"
#include "capture/x11/TestDisplay.h"
#include "media/PictureDuration.h"
#include "media/VideoReader.h"
#include "package/EventLog.h"
#include "package/RecordingProject.h"
#include "package/TemporaryDirectory.h"

namespace vesk::take {
namespace {

namespace fs = std::filesystem;
using app::test::RunningProcess;
using testing::HasSubstr;
using testing::StartsWith;
using namespace std::chrono_literals;

/// A screen on which text scrolls for ever, and a home of the test's own.
class InterruptedTake : public testing::Test {
 protected:
  InterruptedTake() {
    folder_.put("config/vesk/defaults.json",
                R"({"recordingLibraryPath":")" + takes().string() + R"("})");
    display_.start({"xterm", "-geometry", "100x35+0+0", "-e", "sh", "-c",
                    "while :; do date +%N; sleep 0.01; done"});
    display_.start(
        {"sh", "-c",
         "while :; do for x in $(seq 0 20 600); do xdotool mousemove $x $x; done; done"});
  }

  fs::path takes() const { return folder_ / "takes"; }
  fs::path package() const {
    for (const auto& entry : fs::directory_iterator(takes())) return entry.path();
    return {};
  }
  /// A take of half a minute.
  std::unique_ptr<RunningProcess> record() const {
    return std::make_unique<RunningProcess>(
        std::vector<std::string>{VESK_EXECUTABLE, "--diag-static-tail", "30"},
        RunningProcess::Variables{{"DISPLAY", display_.name()},
                                  {"HOME", folder_.path().string()},
                                  {"XDG_CONFIG_HOME", (folder_ / "config").string()}});
  }
  /// Waits until the movie has been written to.
  bool hasBegun() const {
    for (int i = 0; i < 600; ++i) {
      std::error_code ignored;
      if (fs::exists(takes()) && !package().empty() &&
          fs::file_size(package() / "screen.mov", ignored) > 0 && !ignored) {
        return true;
      }
      std::this_thread::sleep_for(50ms);
    }
    return false;
  }
  package::RecordingMeta meta() const {
    const auto project = package::RecordingProject::load(package(), {});
    return project ? project->meta : package::RecordingMeta{};
  }
  /// How long the picture plays, as far as it can be decoded.
  double plays() const {
    auto reader = media::VideoReader::open(package() / "screen.mov");
    double last = 0;
    while (reader) {
      const auto frame = reader->next();
      if (!frame || !*frame) break;
      last = (*frame)->pts;
    }
    return last;
  }

  package::TemporaryDirectory folder_;
  capture::x11::test::TestDisplay display_{
      {.width = 640, .height = 480, .hasWindowManager = false, .arguments = {}}};
};

class SignalledTake : public InterruptedTake, public testing::WithParamInterface<int> {};

TEST_P(SignalledTake, endsByTheOrdinaryPathWithAReason) {
  const auto program = record();
  ASSERT_TRUE(hasBegun());
  program->send(GetParam());
  EXPECT_EQ(program->finish(), 0) << program->output();
  EXPECT_TRUE(meta().interrupted);
  EXPECT_EQ(meta().interruptReason, "录制进程收到终止信号");
  const auto length = media::pictureDuration(package() / "screen.mov");
  ASSERT_TRUE(length);
  EXPECT_NEAR(*length, meta().duration.value_or(0), 0.5);
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalledTake, testing::Values(SIGINT, SIGTERM),
                         [](const auto& each) {
                           return std::string{each.param == SIGINT ? "interrupt" : "terminate"};
                         });

TEST_F(InterruptedTake, aFullDiskEndsTheTakeAndWhatWasWrittenOpens) {
  const auto program = record();
  ASSERT_TRUE(hasBegun());
  // Its files may not grow beyond this any more.
  constexpr rlimit limit{.rlim_cur = 150'000, .rlim_max = 150'000};
  ASSERT_EQ(prlimit(program->id(), RLIMIT_FSIZE, &limit, nullptr), 0);
  EXPECT_NE(program->finish(), -1) << program->output();
  EXPECT_TRUE(meta().interrupted) << program->output();
  EXPECT_THAT(meta().interruptReason.value_or(""), StartsWith("录制中断："));
  EXPECT_TRUE(media::VideoReader::open(package() / "screen.mov"));
  EXPECT_GT(plays(), 0);
}

TEST_F(InterruptedTake, aKilledProcessLosesNoMoreThanTheLatestSeconds) {
  std::mt19937 random{20261121};  // NOLINT: the same moments each time
  std::uniform_real_distribution<double> moment{3.0, 8.0};
  for (int take = 0; take < 3; ++take) {
    fs::remove_all(takes());
    const auto program = record();
    ASSERT_TRUE(hasBegun());
    const auto begin = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(moment(random)));
    program->send(SIGKILL);
    program->finish();
    const std::chrono::duration<double> recorded = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(plays(), recorded.count() - 10);
    std::ifstream log{package() / "events.jsonl"};
    const std::string text{std::istreambuf_iterator<char>{log}, {}};
    EXPECT_THAT(text, HasSubstr("\"type\":\"move\""));
  }
}

}  // namespace
}  // namespace vesk::take
