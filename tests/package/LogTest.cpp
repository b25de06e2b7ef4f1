#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "package/Log.h"

namespace vesk::package {
namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr std::array marks{"JOURNAL_STREAM", "GIO_LAUNCHED_DESKTOP_FILE_PID", "DESKTOP_STARTUP_ID",
                           "XDG_ACTIVATION_TOKEN", "VESK_LOG"};

/// Starts the log as a process with this VESK_LOG would, in the child of a death test.
void startLoggingAt(const char* level) {
  for (const auto* mark : marks) ::unsetenv(mark);
  if (level != nullptr) ::setenv("VESK_LOG", level, 1);
  startLogging();
}

void writeBothLevels() {
  log(LogCategory::app).info("quiet word");
  log(LogCategory::exporting).error("loud word");
}

TEST(Log, eachAreaBearsTheNameOfTheSystem) {
  const std::vector<std::pair<LogCategory, std::string>> names{
      {LogCategory::app, "app"},          {LogCategory::session, "session"},
      {LogCategory::capture, "capture"},  {LogCategory::events, "events"},
      {LogCategory::camera, "camera"},    {LogCategory::mic, "mic"},
      {LogCategory::hotkey, "hotkey"},    {LogCategory::project, "project"},
      {LogCategory::preview, "preview"},  {LogCategory::render, "render"},
      {LogCategory::exporting, "export"}, {LogCategory::library, "library"},
  };
  for (const auto& [category, name] : names) {
    EXPECT_EQ(log(category).name(), "com.ordel.vesk." + name);
  }
}

TEST(Log, anAreaHasOneLogger) {
  EXPECT_EQ(&log(LogCategory::mic), &log(LogCategory::mic));
}

TEST(Log, beforeTheStartOnlyErrorsAreWritten) {
  EXPECT_EXIT(
      {
        writeBothLevels();
        std::exit(0);
      },
      ExitedWithCode(0), AllOf(HasSubstr("loud word"), Not(HasSubstr("quiet word"))));
}

TEST(Log, errorsOnlyAreWrittenByDefault) {
  EXPECT_EXIT(
      {
        startLoggingAt(nullptr);
        writeBothLevels();
        std::exit(0);
      },
      ExitedWithCode(0),
      AllOf(HasSubstr("com.ordel.vesk.export error: loud word"), Not(HasSubstr("quiet word"))));
}

TEST(Log, theLevelInfoAddsInformation) {
  EXPECT_EXIT(
      {
        startLoggingAt("info");
        writeBothLevels();
        std::exit(0);
      },
      ExitedWithCode(0),
      AllOf(HasSubstr("loud word"), HasSubstr("com.ordel.vesk.app info: quiet")));
}

TEST(Log, standardOutputIsNeverWrittenTo) {
  EXPECT_EXIT(
      {
        std::FILE* output = std::tmpfile();
        ::dup2(::fileno(output), STDOUT_FILENO);
        startLoggingAt("info");
        writeBothLevels();
        std::fflush(stdout);
        struct stat status{};
        ::fstat(STDOUT_FILENO, &status);
        std::exit(status.st_size == 0 ? 0 : 1);
      },
      ExitedWithCode(0), HasSubstr("loud word"));
}

TEST(Log, theJournalTakesTheLogAwayFromStandardErrorAndItsAbsenceIsNoFailure) {
  EXPECT_EXIT(
      {
        startLoggingAt(nullptr);
        struct stat status{};
        ::fstat(STDERR_FILENO, &status);
        const auto identity = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
        ::setenv("JOURNAL_STREAM", identity.c_str(), 1);
        startLogging();
        writeBothLevels();
        std::exit(log(LogCategory::app).should_log(spdlog::level::info) ? 0 : 1);
      },
      ExitedWithCode(0), IsEmpty());
}

TEST(Log, theWayMayChangeWhileOtherThreadsWrite) {
  EXPECT_EXIT(
      {
        std::vector<std::jthread> writers;
        for (int writer = 0; writer < 4; ++writer) {
          writers.emplace_back([] {
            for (int line = 0; line < 200; ++line) log(LogCategory::events).error("line");
          });
        }
        for (int round = 0; round < 20; ++round) startLoggingAt(nullptr);
        writers.clear();
        std::exit(0);
      },
      ExitedWithCode(0), HasSubstr("com.ordel.vesk.events error: line"));
}

}  // namespace
}  // namespace vesk::package
