#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QSignalSpy>
#include <cstdlib>
#include <future>
#include <string>
#include <vector>

#include "app/RunningProcess.h"
#include "app/SessionBus.h"
#include "app/window/SingleInstance.h"
#include "editor/QtApplication.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app {
namespace {

using Category = editor::EditorUIState::Category;

/// How a later start of the program ended.
struct LaterStart {
  int exitCode = -1;
  std::string output;  ///< and its errors
};

class SingleInstance : public testing::Test {
 protected:
  SingleInstance() {
    editor::test::qtApplication();
    // This process is on it from its first use of a bus.
    static const test::SessionBus bus;
    ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);  // NOLINT: no other thread yet
  }

  /// Starts the program beside this process, which answers it meanwhile.
  LaterStart startAgain(const std::vector<std::string>& arguments = {}) const {
    std::vector<std::string> command{"sh", "-c", R"(exec "$0" "$@" 2>&1)", VESK_EXECUTABLE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    test::RunningProcess later(command, {{"QT_QPA_PLATFORM", "offscreen"},
                                         {"HOME", home_.path().string()},
                                         {"XDG_CONFIG_HOME", home_.path().string()}});
    auto end = std::async(std::launch::async, [&] { return later.finish(); });
    while (end.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
      editor::test::runEvents(std::chrono::milliseconds(20));
    }
    const int exitCode = end.get();
    return {.exitCode = exitCode, .output = later.output()};
  }

  package::TemporaryDirectory home_;
};

TEST_F(SingleInstance, aSecondStartHandsOverWhatItWasStartedForAndEnds) {
  const app::SingleInstance first;
  ASSERT_EQ(first.role(), app::SingleInstance::Role::first);
  std::vector<WindowFlags> asked;
  QObject::connect(
      &first, &app::SingleInstance::startedAgain,
      [&](const WindowFlags& flags, const QString& /*token*/) { asked.push_back(flags); });

  const std::string package = (home_ / "录制 1.recording").string();
  EXPECT_EQ(startAgain().exitCode, 0);
  EXPECT_EQ(startAgain({"--library"}).exitCode, 0);
  EXPECT_EQ(startAgain({"--edit", "--package", package, "--seek", "2.5", "--open", "画中画",
                        "--edit-poke"})
                .exitCode,
            0);
  EXPECT_THAT(asked, testing::ElementsAre(WindowFlags{}, WindowFlags{.mode = RootMode::library},
                                          WindowFlags{.mode = RootMode::edit,
                                                      .openCategory = Category::pip,
                                                      .seek = 2.5,
                                                      .editPoke = true,
                                                      .package = package}));
}

TEST_F(SingleInstance, theDesktopStartsItWithPackages) {
  app::SingleInstance first;
  QSignalSpy started(&first, &app::SingleInstance::startedAgain);
  first.Activate({{"activation-token", "leave"}});
  first.Open({"https://example.com/a.recording", "file:///a/%E5%BD%95%201.recording"},
             {{"activation-token", "more leave"}});
  ASSERT_EQ(started.count(), 2);
  EXPECT_EQ(started[0][0].value<WindowFlags>(), WindowFlags{});
  EXPECT_EQ(started[0][1].toString(), QString("leave"));
  EXPECT_EQ(started[1][0].value<WindowFlags>(), WindowFlags{.package = "/a/录 1.recording"});
  EXPECT_EQ(started[1][1].toString(), QString("more leave"));
}

TEST_F(SingleInstance, aFirstOneThatDoesNotAnswerIsTold) {
  // Holds the name, and nothing behind it.
  ASSERT_TRUE(QDBusConnection::sessionBus().registerService("com.ordel.vesk"));
  const LaterStart later = startAgain();
  EXPECT_TRUE(QDBusConnection::sessionBus().unregisterService("com.ordel.vesk"));
  EXPECT_THAT(later.output, testing::HasSubstr("Vesk 已在运行，但没有响应。\n"));
  EXPECT_EQ(later.exitCode, 1);
}

}  // namespace
}  // namespace vesk::app
