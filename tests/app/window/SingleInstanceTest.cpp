#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <memory>
#include <string>

#include "app/window/SingleInstance.h"
#include "capture/x11/ChildProgram.h"
#include "editor/QtApplication.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app {
namespace {

using capture::x11::test::ChildProgram;

/// A session bus of the test's own, which this process is on from its first use of one.
class SessionBus {
 public:
  SessionBus()
      : address_("unix:path=" + (folder_ / "bus").string()),
        daemon_({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address_}) {
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);  // NOLINT: no other thread yet
    for (int wait = 0; wait < 500 && !std::filesystem::exists(folder_ / "bus"); ++wait) {
      editor::test::runEvents(std::chrono::milliseconds(10));
    }
  }

  const package::TemporaryDirectory& folder() const { return folder_; }

 private:
  package::TemporaryDirectory folder_;
  std::string address_;
  ChildProgram daemon_;
};

/// Starts the program a second time and lets this process answer; its exit code.
int startAgain(const SessionBus& bus, std::vector<std::string> arguments) {
  std::vector<std::string> command{VESK_EXECUTABLE};
  command.insert(command.end(), arguments.begin(), arguments.end());
  ChildProgram later(std::move(command),
                     {"QT_QPA_PLATFORM=offscreen", "HOME=" + bus.folder().path().string(),
                      "XDG_CONFIG_HOME=" + bus.folder().path().string()});
  auto end = std::async(std::launch::async, [&] { return later.finish(); });
  while (end.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
    editor::test::runEvents(std::chrono::milliseconds(20));
  }
  return end.get();
}

TEST(SingleInstance, aSecondStartHandsOverToTheFirstAndEnds) {
  editor::test::qtApplication();
  const SessionBus bus;
  const SingleInstance first;
  ASSERT_EQ(first.role(), SingleInstance::Role::first);
  QSignalSpy activated(&first, &SingleInstance::activated);
  QSignalSpy opened(&first, &SingleInstance::opened);

  EXPECT_EQ(startAgain(bus, {"--edit"}), 0);
  EXPECT_EQ(activated.count(), 1);
  EXPECT_EQ(opened.count(), 0);

  const std::string package = (bus.folder() / "录制 1.recording").string();
  EXPECT_EQ(startAgain(bus, {"--edit", "--package", package}), 0);
  ASSERT_EQ(opened.count(), 1);
  EXPECT_EQ(opened[0][0].toString().toStdString(), package);
  EXPECT_EQ(activated.count(), 2);
}

}  // namespace
}  // namespace vesk::app
