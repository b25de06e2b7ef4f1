#include <gtest/gtest.h>

#include "package/LogRoute.h"

namespace vesk::package {
namespace {

constexpr LogRoute journal{.target = LogRoute::Target::journal, .includesInfo = true};
constexpr LogRoute errorsOnly{.target = LogRoute::Target::standardError, .includesInfo = false};
constexpr LogRoute everything{.target = LogRoute::Target::standardError, .includesInfo = true};

LogSurroundings withoutTerminal() {
  LogSurroundings surroundings;
  surroundings.standardErrorIdentity = "9:1234";
  surroundings.processID = "77";
  return surroundings;
}

LogSurroundings inTerminal() {
  auto surroundings = withoutTerminal();
  surroundings.hasTerminal = true;
  return surroundings;
}

TEST(LogRoute, aPlainProcessWritesErrorsToStandardError) {
  EXPECT_EQ(logRoute(inTerminal()), errorsOnly);
  EXPECT_EQ(logRoute(withoutTerminal()), errorsOnly);
}

TEST(LogRoute, theLevelInfoAddsInformation) {
  auto surroundings = inTerminal();
  surroundings.level = "info";
  EXPECT_EQ(logRoute(surroundings), everything);
}

TEST(LogRoute, anyOtherLevelStaysAtErrors) {
  for (const auto* level : {"", "INFO", "debug", "error"}) {
    auto surroundings = inTerminal();
    surroundings.level = level;
    EXPECT_EQ(logRoute(surroundings), errorsOnly) << level;
  }
}

TEST(LogRoute, aStandardErrorThatIsTheJournalsStreamGoesToTheJournal) {
  auto surroundings = inTerminal();
  surroundings.journalStream = "9:1234";
  EXPECT_EQ(logRoute(surroundings), journal);
}

TEST(LogRoute, aStandardErrorRedirectedAwayFromTheJournalIsKept) {
  auto surroundings = withoutTerminal();
  surroundings.journalStream = "9:1235";
  EXPECT_EQ(logRoute(surroundings), errorsOnly);
}

TEST(LogRoute, aClosedStandardErrorIsNotTheJournal) {
  auto surroundings = withoutTerminal();
  surroundings.standardErrorIdentity = "";
  surroundings.journalStream = "";
  EXPECT_EQ(logRoute(surroundings), errorsOnly);
}

TEST(LogRoute, aProcessLaunchedByADesktopGoesToTheJournal) {
  auto byStartupID = withoutTerminal();
  byStartupID.startupID = "xfce4-1";
  EXPECT_EQ(logRoute(byStartupID), journal);
  auto byToken = withoutTerminal();
  byToken.activationToken = "kwin-2";
  EXPECT_EQ(logRoute(byToken), journal);
  auto byProcess = withoutTerminal();
  byProcess.launchedProcessID = "77";
  EXPECT_EQ(logRoute(byProcess), journal);
}

TEST(LogRoute, aMarkMadeForAnotherProcessDoesNotCount) {
  auto surroundings = withoutTerminal();
  surroundings.launchedProcessID = "76";
  surroundings.startupID = "gnome-shell-1";
  EXPECT_EQ(logRoute(surroundings), errorsOnly);
}

TEST(LogRoute, aMarkInheritedInATerminalDoesNotCount) {
  auto surroundings = inTerminal();
  surroundings.startupID = "xfce4-1";
  surroundings.activationToken = "kwin-2";
  surroundings.launchedProcessID = "77";
  EXPECT_EQ(logRoute(surroundings), errorsOnly);
}

}  // namespace
}  // namespace vesk::package
