#include "app/RendererLayout.h"

#include <array>
#include <memory>
#include <utility>

#include "app/HeadlessRenderer.h"
#include "package/RecordingProject.h"
#include "package/SyntheticPackage.h"

namespace vesk::app {
namespace {

struct Stage {
  std::unique_ptr<HeadlessRenderer> headless;
  std::unique_ptr<compositor::PreviewRenderer> renderer;
};

std::shared_ptr<Stage> makeStage(package::Timestamp now) {
  auto stage = std::make_shared<Stage>();
  stage->headless = HeadlessRenderer::create();
  if (!stage->headless) return nullptr;
  stage->renderer = stage->headless->makeRenderer();
  const std::array marks{package::SyntheticMark{.t = 1.0}};
  const auto url = package::makeSyntheticPackage(marks, 2.0, now);
  if (!stage->renderer || !url) return nullptr;
  auto project = package::RecordingProject::load(*url, now);
  if (!project) return nullptr;
  stage->renderer->loadForExport(
      std::make_shared<const package::RecordingProject>(*std::move(project)));
  return stage;
}

}  // namespace

PictureLayout rendererLayout(package::Timestamp now) {
  return [now, tried = false, stage = std::shared_ptr<Stage>()](
             int width, int height, bool framed) mutable -> std::optional<PictureRect> {
    if (!std::exchange(tried, true)) stage = makeStage(now);
    if (!stage) return std::nullopt;
    stage->renderer->settings.frameStyle.enabled = framed;
    const compositor::ContentRect rect = stage->renderer->contentRect(width, height);
    return PictureRect{.x = static_cast<double>(rect.origin.x) * width,
                       .y = static_cast<double>(rect.origin.y) * height,
                       .width = static_cast<double>(rect.size.x) * width,
                       .height = static_cast<double>(rect.size.y) * height};
  };
}

}  // namespace vesk::app
