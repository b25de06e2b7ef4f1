#include "app/DesktopBackends.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "capture/PreferredCamera.h"
#include "capture/pipewire/Microphone.h"
#include "capture/pipewire/PipeWireCamera.h"
#include "capture/pipewire/SystemSound.h"
#include "capture/v4l2/V4l2Camera.h"
#include "capture/x11/CurrentLayout.h"
#include "capture/x11/X11DisplayGeometry.h"
#include "capture/x11/X11FrontApplication.h"
#include "capture/x11/X11HotKeys.h"
#include "capture/x11/X11InputInjector.h"
#include "capture/x11/X11InputSource.h"
#include "capture/x11/X11ScreenSource.h"
#include "package/Log.h"

namespace vesk::app {
namespace {

using capture::BackendError;
using capture::CaptureBackends;

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);  // NOLINT: nobody sets variables
  return value != nullptr && *value != '\0';
}

/// Puts an opened backend into its place; an error stays with the first that failed.
template <typename Seam, typename Opened>
void place(std::unique_ptr<Seam>& seam, Opened opened, std::expected<void, BackendError>& outcome) {
  if (opened) {
    seam = *std::move(opened);
  } else if (outcome) {
    outcome = std::unexpected(opened.error());
  }
}

std::expected<void, BackendError> openX11(CaptureBackends& backends) {
  std::expected<void, BackendError> outcome;
  place(backends.geometry, capture::x11::X11DisplayGeometry::open(), outcome);
  place(backends.screen, capture::x11::X11ScreenSource::open(), outcome);
  place(backends.input, capture::x11::X11InputSource::open(), outcome);
  place(backends.hotKeys, capture::x11::X11HotKeys::open(), outcome);
  place(backends.frontApplication, capture::x11::X11FrontApplication::open(), outcome);
  place(backends.injector, capture::x11::X11InputInjector::open(), outcome);
  if (auto layout = capture::x11::currentLayout()) {
    backends.keyboardLayout = *std::move(layout);
  } else if (outcome) {
    outcome = std::unexpected(layout.error());
  }
  backends.capabilities.displays = true;
  backends.capabilities.windows = true;
  backends.capabilities.regions = true;
  backends.capabilities.hidesOwnWindows = true;
  backends.capabilities.input = true;
  backends.capabilities.keyboard = true;
  backends.capabilities.hotKeys = true;
  backends.capabilities.secureInput = true;
  return outcome;
}

/// A kind of desktop: what it is called, the variable that tells that it runs, and its backends.
struct Desktop {
  std::string_view name;
  const char* variable;
  std::expected<void, BackendError> (*open)(CaptureBackends& backends);
};

/// The one to be preferred first.
constexpr std::array desktops{
    Desktop{.name = "x11", .variable = "DISPLAY", .open = openX11},
};

void openSoundAndCamera(CaptureBackends& backends) {
  backends.systemSound = std::make_unique<capture::pipewire::SystemSound>();
  backends.microphone = std::make_unique<capture::pipewire::Microphone>();
  backends.camera = openCameras();
  backends.capabilities.systemSound = true;
  backends.capabilities.microphone = true;
  backends.capabilities.camera = true;
}

}  // namespace

std::unique_ptr<capture::CameraSource> openCameras() {
  std::vector<std::unique_ptr<capture::CameraSource>> sources;
  sources.push_back(std::make_unique<capture::pipewire::PipeWireCamera>());
  sources.push_back(std::make_unique<capture::v4l2::V4l2Camera>());
  return std::make_unique<capture::PreferredCamera>(std::move(sources));
}

std::expected<CaptureBackends, std::string> openDesktopBackends() {
  std::string causes;
  for (const Desktop& desktop : desktops) {
    if (!isSet(desktop.variable)) continue;
    CaptureBackends backends;
    backends.name = desktop.name;
    if (const auto opened = desktop.open(backends); !opened) {
      causes += (causes.empty() ? "" : "；") + opened.error().message;
      continue;
    }
    openSoundAndCamera(backends);
    package::log(package::LogCategory::capture).info("desktop backend: {}", desktop.name);
    return backends;
  }
  return std::unexpected(causes.empty() ? "没有可用的图形桌面（没有设置 DISPLAY）" : causes);
}

}  // namespace vesk::app
