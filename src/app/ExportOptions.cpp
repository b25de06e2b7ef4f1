#include "app/ExportOptions.h"

#include "motion/CursorTrack.h"
#include "motion/SmartZoom.h"

namespace vesk::app {
namespace {

void assignNumber(const CommandLine& commandLine, std::string_view flag, double& field) {
  field = commandLine.number(flag).value_or(field);
}

package::FrameStyle exportFrame() {
  return {.enabled = true,
          .background = package::FrameStyle::Background::gradient,
          .padding = 0.07,
          .cornerRadius = 0.018,
          .shadow = 0.5};
}

package::Camera3DSettings camera3D(const CommandLine& commandLine) {
  package::Camera3DSettings camera;
  camera.enabled = commandLine.has("--3d");
  if (!camera.enabled) return camera;
  assignNumber(commandLine, "--fov", camera.fov);
  assignNumber(commandLine, "--yaw", camera.yaw);
  assignNumber(commandLine, "--pitch", camera.pitch);
  assignNumber(commandLine, "--roll", camera.roll);
  return camera;
}

void applyRipple(std::string_view name, package::RippleSettings& ripple) {
  if (name == "ring") {
    ripple.style = package::RippleStyle::ring;
    ripple.duration = 0.4;
  } else if (name == "dot") {
    ripple.style = package::RippleStyle::dot;
    ripple.duration = 0.2;
  } else {
    ripple.style = package::RippleStyle::ripple;
    ripple.duration = 0.25;
  }
}

compositor::CompositeSettings settingsWithoutTrack(const CommandLine& commandLine) {
  compositor::CompositeSettings settings;
  if (commandLine.has("--frame")) settings.frameStyle = exportFrame();
  settings.transitionEase =
      commandLine.value("--ease").and_then(motion::cameraEase).value_or(settings.transitionEase);
  settings.camera3D = camera3D(commandLine);
  assignNumber(commandLine, "--sys-vol", settings.systemVolume);
  assignNumber(commandLine, "--mic-vol", settings.micVolume);
  settings.rippleSettings.enabled = !commandLine.has("--no-ripple");
  settings.cursorSettings.style = commandLine.value("--cursor")
                                      .and_then(package::cursorStyle)
                                      .value_or(settings.cursorSettings.style);
  if (const auto ripple = commandLine.value("--ripple")) {
    applyRipple(*ripple, settings.rippleSettings);
  }
  assignNumber(commandLine, "--pip-shadow", settings.pip.shadow);
  return settings;
}

}  // namespace

ExportLook exportLook(const CommandLine& commandLine, const package::RecordingProject& project) {
  ExportLook look{.settings = settingsWithoutTrack(commandLine),
                  .segments = motion::combinedSegments(project, motion::Sensitivity::standard,
                                                       !commandLine.has("--no-auto"))};
  look.settings.cameraTrack =
      motion::buildTrack(look.segments, motion::CursorTrack(project), project.duration(),
                         look.settings.camera3D, look.settings.transitionEase);
  return look;
}

}  // namespace vesk::app
