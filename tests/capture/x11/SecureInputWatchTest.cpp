#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "capture/contract/InputSourceContract.h"
#include "capture/x11/SecureInputWatch.h"
#include "capture/x11/TestApplication.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/TestUser.h"
#include "capture/x11/X11DisplayGeometry.h"
#include "capture/x11/X11InputSource.h"
#include "package/LogCapture.h"

namespace vesk::capture::x11::test {
namespace {

using contract::comesTrue;

constexpr XKeyCode escapeKey = 9;
constexpr XKeyCode tabKey = 23;

/// A variable of the environment for as long as the object lives.
class Variable {
 public:
  Variable(const char* name, const std::string& value) : name_{name} {
    ::setenv(name, value.c_str(), 1);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { ::unsetenv(name_); }

 private:
  const char* name_;
};

/// A folder of the test's own.
class Folder {
 public:
  Folder() {
    std::string name = testing::TempDir() + "vesk-bus-XXXXXX";
    if (!::mkdtemp(name.data())) throw std::runtime_error("no folder");
    path_ = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

struct CloseBus {
  void operator()(sd_bus* bus) const noexcept { sd_bus_flush_close_unref(bus); }
};

/// The session's; null when it does not answer.
std::unique_ptr<sd_bus, CloseBus> openBus() {
  sd_bus* opened = nullptr;
  const char* name = nullptr;
  sd_bus_open_user(&opened);
  std::unique_ptr<sd_bus, CloseBus> bus{opened};
  if (!bus || sd_bus_get_unique_name(opened, &name) < 0) return nullptr;
  return bus;
}

/// A desktop session with a bus of its own, on which the accessibility bus starts when it is asked
/// for.
class TestSession {
 public:
  TestSession() {
    display_.start({"dbus-daemon", "--session", "--nofork", "--address=" + address_});
    if (!comesTrue([] { return openBus() != nullptr; })) {
      throw std::runtime_error("the session bus did not start");
    }
  }

  TestDisplay& display() { return display_; }
  const TestDisplay& display() const { return display_; }

  /// Whether somebody has asked applications to be accessible.
  bool isAccessible() const {
    int isEnabled = 0;
    if (const auto bus = openBus()) {
      sd_bus_get_property_trivial(bus.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status",
                                  "IsEnabled", nullptr, 'b', &isEnabled);
    }
    return isEnabled != 0;
  }

 private:
  Folder folder_;
  std::string address_ = "unix:path=" + (folder_.path() / "bus").string();
  Variable busAddress_{"DBUS_SESSION_BUS_ADDRESS", address_};
  Variable runtimeFolder_{"XDG_RUNTIME_DIR", folder_.path().string()};
  Variable settings_{"GSETTINGS_BACKEND", "memory"};
  TestDisplay display_{{.hasWindowManager = true}};
};

class SecureInputRig {
 public:
  SecureInputRig() {
    if (!comesTrue([this] { return session_.isAccessible(); })) {
      throw std::runtime_error("the accessibility bus did not start");
    }
  }
  InputSource& source() { return *source_; }

  void enterPasswordField() { session_.display().start({"zenity", "--password"}); }
  void leavePasswordField() { user_.typeKey(escapeKey); }

 private:
  TestSession session_;
  TestUser user_{session_.display().connection()};
  std::unique_ptr<X11InputSource> source_ = X11InputSource::open(session_.display().name()).value();
};

class SecureInputWatchTest : public testing::Test {
 protected:
  SecureInputWatchTest() {
    EXPECT_TRUE(comesTrue([this] { return session.isAccessible(); }));
  }

  bool comesOn() const {
    return comesTrue([this] { return watch.isOn(); });
  }
  bool goesOff() const {
    return comesTrue([this] { return !watch.isOn(); });
  }
  std::uint32_t dialog() const {
    const auto geometry = X11DisplayGeometry::open(session.display().name()).value();
    const auto windows = geometry->windows().value();
    for (const auto& window : windows) {
      if (window.owner && window.owner->applicationID == "Zenity") return window.id;
    }
    return 0;
  }

  TestSession session;
  SecureInputWatch watch;
  TestUser user{session.display().connection()};
};

TEST_F(SecureInputWatchTest, isOnInThePasswordFieldOfADialogAndOffInTheOther) {
  session.display().start({"zenity", "--password", "--username"});
  ASSERT_TRUE(comesTrue([this] { return dialog() != 0; }));
  // The dialog may still be on its way to the keyboard.
  ASSERT_TRUE(comesTrue([this] {
    user.typeKey(tabKey);
    std::this_thread::sleep_for(std::chrono::milliseconds{300});
    return watch.isOn();
  }));
  user.type(48, shiftModifier);
  EXPECT_TRUE(goesOff());
  user.typeKey(tabKey);
  EXPECT_TRUE(comesOn());
}

TEST_F(SecureInputWatchTest, isOffWhileTheUserIsInAWindowThatTellsNothing) {
  const TestApplication silent{session.display().name(), "Silent"};
  const auto window = silent.open({.x = 10, .y = 10, .width = 100, .height = 100}, "终端");
  session.display().start({"zenity", "--password"});
  ASSERT_TRUE(comesOn());
  silent.activate(window);
  EXPECT_TRUE(goesOff());
  silent.activate(dialog());
  EXPECT_TRUE(comesOn());
}

TEST_F(SecureInputWatchTest, isOffWhenTheApplicationDies) {
  auto& application = session.display().start({"zenity", "--password"});
  ASSERT_TRUE(comesOn());
  application.send(SIGKILL);
  EXPECT_TRUE(goesOff());
}

TEST(SecureInputWatch, applicationsAreAskedToBeAccessibleForAsLongAsItLives) {
  const TestSession session;
  EXPECT_FALSE(session.isAccessible());
  {
    const SecureInputWatch watch;
    EXPECT_TRUE(comesTrue([&] { return session.isAccessible(); }));
  }
  EXPECT_FALSE(session.isAccessible());
}

TEST(SecureInputWatch, isOffWithoutASessionBusWhichTheLogTellsOnce) {
  const Variable nowhere{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"};
  const package::LogCapture log{package::LogCategory::events};
  {
    const SecureInputWatch watch;
    EXPECT_FALSE(watch.isOn());
  }
  EXPECT_EQ(log.text(), "warning: password fields cannot be told: no session bus\n");
}

}  // namespace
}  // namespace vesk::capture::x11::test

namespace vesk::capture::contract {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, SecureInputContract, x11::test::SecureInputRig);

}  // namespace
}  // namespace vesk::capture::contract
