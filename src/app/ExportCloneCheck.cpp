#include "app/ExportCloneCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string_view>
#include <utility>

#include "app/HeadlessRenderer.h"
#include "compositor/PreviewRenderer.h"
#include "motion/CursorTrack.h"
#include "motion/SmartZoom.h"
#include "package/RecordingProject.h"
#include "package/SyntheticPackage.h"

namespace vesk::app {
namespace {

using compositor::CompositeSettings;
using compositor::PreviewRenderer;

constexpr double clonedTakeLength = 6;

std::shared_ptr<const package::RecordingProject> syntheticProject(package::Timestamp now) {
  using package::RecordedEvent;
  constexpr std::array marks{
      package::SyntheticMark{.t = 1.0, .kind = RecordedEvent::Kind::zoomIn, .x = 0.3, .y = 0.4}};
  const auto url = package::makeSyntheticPackage(marks, clonedTakeLength, now);
  if (!url) return nullptr;
  auto project = package::RecordingProject::load(*url, now);
  if (!project) return nullptr;
  return std::make_shared<const package::RecordingProject>(*std::move(project));
}

/// A look of which nothing is as it comes.
CompositeSettings unusualLook(const package::RecordingProject& project) {
  CompositeSettings look;
  look.rippleSettings.size = 0.077;
  look.rippleSettings.duration = 0.44;
  look.rippleSettings.opacity = 0.31;
  look.rippleSettings.stroke = false;
  look.rippleSettings.enabled = false;
  look.cursorSettings.visible = false;
  look.cursorSettings.scale = 2.9;
  look.cursorSettings.smoothing = 0.21;
  look.cursorSettings.smoothingWindow = 0.33;
  look.cursorSettings.clickShrink = 0.27;
  look.frameStyle.enabled = true;
  look.frameStyle.padding = 0.11;
  look.frameStyle.cornerRadius = 0.055;
  look.frameStyle.shadow = 0.77;
  look.camera3D = {.enabled = true, .fov = 41, .yaw = 19, .pitch = -8, .roll = 3};
  look.transitionEase = motion::CameraEase::springy;
  look.pip.enabled = false;
  look.pip.size = 0.39;
  look.pip.center = {0.23F, 0.61F};
  look.pip.cornerRadius = 0.29;
  look.pip.border = 0.044;
  look.pip.shadow = 0.66;
  look.pip.mirrored = false;
  look.motionBlurEnabled = false;
  look.motionBlurStrength = 0.42;
  look.systemVolume = 0.35;
  look.micVolume = 1.75;
  look.manualZoom = true;
  look.zoomLevel = 3.7;
  look.zoomCenter = {0.18F, 0.82F};
  look.cameraTrack = motion::buildTrack(
      motion::combinedSegments(project, motion::Sensitivity::standard, true),
      motion::CursorTrack(project), project.duration(), look.camera3D, look.transitionEase);
  return look;
}

bool isEmpty(const std::optional<motion::CameraTrack>& track) {
  return !track || track->samples.empty();
}

/// The largest difference of zoom and of centre over the duration.
double trackDeviation(const motion::CameraTrack& a, const motion::CameraTrack& b, double duration) {
  constexpr int lastSample = 20;
  double largest = 0;
  for (int index = 0; index <= lastSample; ++index) {
    const double time = duration * index / lastSample;
    const motion::CameraPose left = a.sample(time);
    const motion::CameraPose right = b.sample(time);
    const glm::dvec2 centre = glm::abs(glm::dvec2(left.target) - glm::dvec2(right.target));
    largest = std::max({largest, std::abs(left.framing - right.framing), centre.x, centre.y});
  }
  return largest;
}

/// What a later change of the source's look does to the clone.
std::vector<std::string> entanglements(PreviewRenderer& source, const PreviewRenderer& clone) {
  std::vector<std::string> found;
  const CompositeSettings before = clone.settings;
  source.settings.pip.size = 0.99;
  if (clone.settings.pip != before.pip) {
    found.emplace_back("克隆与源共享了 pip（改源影响了克隆）");
  }
  source.settings.camera3D.fov = 60;
  if (clone.settings.camera3D != before.camera3D) {
    found.emplace_back("克隆与源共享了 camera3D");
  }
  if (&source == &clone) found.emplace_back("根本没克隆，返回的是同一个对象");
  return found;
}

}  // namespace

std::vector<std::string> cloneDifferences(const CompositeSettings& source,
                                          const CompositeSettings& clone, double duration) {
  std::vector<std::string> differences;
  const auto compare = [&](std::string_view name, const auto& member) {
    if (!(source.*member == clone.*member)) differences.emplace_back(name);
  };
  compare("ripple", &CompositeSettings::rippleSettings);
  compare("cursor", &CompositeSettings::cursorSettings);
  compare("frameStyle", &CompositeSettings::frameStyle);
  compare("camera3D", &CompositeSettings::camera3D);
  compare("transitionEase", &CompositeSettings::transitionEase);
  compare("pip", &CompositeSettings::pip);
  compare("motionBlurEnabled", &CompositeSettings::motionBlurEnabled);
  compare("motionBlurStrength", &CompositeSettings::motionBlurStrength);
  compare("systemVolume", &CompositeSettings::systemVolume);
  compare("micVolume", &CompositeSettings::micVolume);
  compare("manualZoom", &CompositeSettings::manualZoom);
  compare("zoomLevel", &CompositeSettings::zoomLevel);
  compare("zoomCenter", &CompositeSettings::zoomCenter);
  if (isEmpty(source.cameraTrack) != isEmpty(clone.cameraTrack)) {
    differences.emplace_back("cameraTrack 是否为空");
  }
  constexpr double tolerance = 1e-9;
  const motion::CameraTrack none;
  const double deviation =
      trackDeviation(source.cameraTrack.value_or(none), clone.cameraTrack.value_or(none), duration);
  if (!(deviation <= tolerance)) {
    differences.push_back(fmt::format("cameraTrack 采样不一致，最大偏差 {:.3e}", deviation));
  }
  return differences;
}

CheckOutcome checkExportClone(package::Timestamp now) {
  SelfCheck check(" 导出渲染器克隆");
  const auto headless = HeadlessRenderer::create();
  std::unique_ptr<PreviewRenderer> source;
  if (headless) source = headless->makeRenderer();
  if (!source) return check.breakOff("Metal 不可用");
  const auto project = syntheticProject(now);
  if (!project) return check.breakOff("造不出合成素材");
  source->load(project);
  source->settings = unusualLook(*project);

  check.line("  源渲染器 14 项参数全部设为非默认值，逐项比对克隆");
  const auto clone = source->exportClone(headless->device(), project);
  if (!clone) return check.breakOff("克隆失败");
  for (std::string& difference :
       cloneDifferences(source->settings, (*clone)->settings, project->duration())) {
    check.collect(std::move(difference));
  }
  for (std::string& entanglement : entanglements(*source, **clone)) {
    check.collect(std::move(entanglement));
  }
  return check.finishWithList("克隆完整且独立\n");
}

}  // namespace vesk::app
