// The program itself: how it ends, lives on without its window, and is started again.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "app/RunningProcess.h"
#include "app/SessionBus.h"
#include "package/TemporaryDirectory.h"
#include "window/Desktop.h"
#include "window/Until.h"
#include "window/WindowRequests.h"

namespace vesk::app::test {
namespace {

namespace fs = std::filesystem;

/// On the display of all tests, with a session bus and a home of its own.
class Program : public testing::Test {
 protected:
  using Arguments = std::vector<std::string>;

  fs::path put(const fs::path& take) const {
    fs::path package = home_ / take.filename().string();
    fs::copy(take, package, fs::copy_options::recursive);
    return package;
  }

  /// @param command what the program is started by, if not directly.
  RunningProcess start(const Arguments& arguments, Arguments command = {}) const {
    command.emplace_back(VESK_EXECUTABLE);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunningProcess(command, {{"HOME", home_.path()},
                                    {"XDG_CONFIG_HOME", home_ / "config"},
                                    {"DBUS_SESSION_BUS_ADDRESS", busAddress}});
  }

  /// Starts it as well; the exit code.
  int startAgain(const Arguments& arguments = {}) const {
    RunningProcess later = start(arguments);
    EXPECT_TRUE(ends(later));
    return ends(later) ? later.finish() : -1;
  }

  static bool shows(const RunningProcess& program) {
    return until([&] { return windowOf(desktop(), program.id()).has_value(); });
  }
  static bool ends(const RunningProcess& program) {
    return until([&] { return program.hasEnded(); });
  }
  /// Closes its window; whether that goes.
  static bool closes(const RunningProcess& program) {
    close(desktop(), windowOf(desktop(), program.id()).value());
    return until([&] { return !windowOf(desktop(), program.id()); });
  }
  static const capture::x11::Connection& desktop() {
    return Desktop::current().display().connection();
  }

  SessionBus bus_;
  std::string busAddress = bus_.address();

 private:
  package::TemporaryDirectory home_;
};

class EndingProgram : public Program, public testing::WithParamInterface<int> {};

TEST_P(EndingProgram, itSavesBeforeItEnds) {
  const fs::path package = put(VESK_SAMPLE_TAKE);
  RunningProcess program = start({"--edit", "--package", package});
  ASSERT_TRUE(shows(program));
  ASSERT_FALSE(fs::exists(package / "edit.json"));
  program.send(GetParam());
  ASSERT_TRUE(ends(program));
  EXPECT_EQ(program.finish(), 0);
  EXPECT_TRUE(fs::exists(package / "edit.json"));
}

INSTANTIATE_TEST_SUITE_P(Signals, EndingProgram, testing::Values(SIGTERM, SIGHUP, SIGINT),
                         [](const auto& signal) -> std::string {
                           return ::sigabbrev_np(signal.param);
                         });

TEST_F(Program, whereTheEndOfTheTerminalIsToBeIgnoredItIs) {
  const fs::path package = put(VESK_SAMPLE_TAKE);
  RunningProcess program = start({"--edit", "--package", package}, {"nohup"});
  ASSERT_TRUE(shows(program));
  program.send(SIGHUP);
  EXPECT_EQ(startAgain(), 0);
  EXPECT_TRUE(shows(program));
  EXPECT_FALSE(fs::exists(package / "edit.json"));
  program.send(SIGTERM);
  ASSERT_TRUE(ends(program));
  EXPECT_EQ(program.finish(), 0);
}

TEST_F(Program, withItsWindowClosedItLivesAndAnotherStartBringsTheWindowBack) {
  RunningProcess program = start({});
  ASSERT_TRUE(shows(program));
  ASSERT_TRUE(closes(program));
  EXPECT_EQ(startAgain(), 0);
  EXPECT_TRUE(shows(program));
  program.send(SIGTERM);
  ASSERT_TRUE(ends(program));
  EXPECT_EQ(program.finish(), 0);
}

TEST_F(Program, withoutABusItEndsWithItsWindow) {
  busAddress = "disabled:";
  const fs::path package = put(VESK_SAMPLE_TAKE);
  RunningProcess program = start({"--edit", "--package", package});
  ASSERT_TRUE(shows(program));
  ASSERT_TRUE(closes(program));
  ASSERT_TRUE(ends(program));
  EXPECT_EQ(program.finish(), 0);
  EXPECT_TRUE(fs::exists(package / "edit.json"));
}

TEST_F(Program, whatAnotherStartIsGivenTheFirstOneDoes) {
  const fs::path first = put(VESK_SAMPLE_TAKE);
  const fs::path second = put(VESK_MARKS_TAKE);
  RunningProcess program = start({"--edit", "--package", first});
  ASSERT_TRUE(shows(program));
  EXPECT_EQ(startAgain({"--package", second}), 0);
  EXPECT_TRUE(until([&] { return fs::exists(first / "edit.json"); })) << "it is left";
  program.send(SIGTERM);
  ASSERT_TRUE(ends(program));
  EXPECT_TRUE(fs::exists(second / "edit.json"));
  EXPECT_EQ(program.finish(), 0);
}

}  // namespace
}  // namespace vesk::app::test
