#include "window/Desktop.h"

#include <QAccessible>
#include <QSurfaceFormat>
#include <array>
#include <cstdlib>
#include <filesystem>

#include "app/window/GuiSetup.h"

namespace vesk::app::test {
namespace {

/// Room for the largest window that is tested, with its frame.
constexpr capture::x11::test::TestDisplay::Options screen{
    .width = 2000, .height = 1200, .hasWindowManager = true, .arguments = {}};

Desktop* currentDesktop = nullptr;

void set(const char* variable, const std::string& value) {
  ::setenv(variable, value.c_str(), 1);
}

/// The driver tells of what it objects to.
void askForDebugContext() {
  QSurfaceFormat format = QSurfaceFormat::defaultFormat();
  format.setOption(QSurfaceFormat::DebugContext);
  QSurfaceFormat::setDefaultFormat(format);
}

}  // namespace

Desktop& Desktop::current() {
  return *currentDesktop;
}

void Desktop::setEnvironment() const {
  // What the one who runs the tests has set for their own windows.
  for (const char* const variable :
       {"WAYLAND_DISPLAY", "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI",
        "QT_IM_MODULE", "XMODIFIERS", "QT_QUICK_BACKEND", "QSG_RENDER_LOOP"}) {
    ::unsetenv(variable);
  }
  set("DISPLAY", display_->name());
  set("QT_QPA_PLATFORM", "xcb");
  set("QT_XCB_GL_INTEGRATION", "xcb_egl");
  set("LIBGL_ALWAYS_SOFTWARE", "1");
  set("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  for (const auto& [variable, name] : {std::pair{"XDG_CONFIG_HOME", "config"},
                                       {"XDG_DATA_HOME", "data"},
                                       {"XDG_CACHE_HOME", "cache"},
                                       {"XDG_STATE_HOME", "state"},
                                       {"XDG_RUNTIME_DIR", "runtime"}}) {
    const std::filesystem::path folder = folder_ / name;
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    set(variable, folder.string());
  }
}

void Desktop::SetUp() {
  static int argumentCount = 1;
  static std::array<char, 5> name{"vesk"};
  static std::array<char*, 2> arguments{name.data(), nullptr};
  display_.emplace(screen);
  setEnvironment();
  chooseGraphics();
  askForDebugContext();
  application_.emplace(argumentCount, arguments.data());
  describeApplication();
  QAccessible::setActive(true);
  currentDesktop = this;
}

void Desktop::TearDown() {
  currentDesktop = nullptr;
  application_.reset();
  display_.reset();
}

}  // namespace vesk::app::test
