#include "export/RenderLoop.h"

#include <algorithm>
#include <utility>

namespace vesk::exporting {
namespace {

using compositor::CompositeDamage;
using compositor::CompositeTarget;
using compositor::PictureDownload;

constexpr glm::vec4 clearColor{0, 0, 0, 1};
constexpr std::int64_t framesPerReport = 10;

void count(const CompositeDamage& damage, ExportStatistics& statistics) {
  ++statistics.frames;
  if (damage.isEverything) {
    ++statistics.fullyRedrawn;
  } else if (damage.isNothing()) {
    ++statistics.sentAgain;
  } else {
    ++statistics.partlyRedrawn;
  }
}

ExportError textureFailure(const gpu::GpuError& error) {
  return ExportError::writerFailed("创建 Metal 纹理失败（" + error.message + "）");
}

}  // namespace

RenderLoop::RenderLoop(const gpu::Device& device, compositor::PreviewRenderer& renderer,
                       CompositeTarget::Redraw redraw, PictureDownload::Conversion conversion)
    : device_(device), renderer_(renderer), redraw_(redraw), conversion_(conversion) {}

std::expected<ExportStatistics, ExportError> RenderLoop::run(const Grid& grid, SourceFrames& source,
                                                             const Sink& sink,
                                                             const Progress& progress,
                                                             const std::atomic<bool>& cancelled) {
  auto target = CompositeTarget::create(device_, grid.width, grid.height);
  if (!target) return std::unexpected(textureFailure(target.error()));
  auto download = PictureDownload::create(device_, grid.width, grid.height, conversion_);
  if (!download) return std::unexpected(textureFailure(download.error()));

  const compositor::ContentRect rect = renderer_.contentRect(grid.width, grid.height);
  const auto fps = static_cast<double>(grid.fps);
  ExportStatistics statistics;
  for (std::int64_t index = 0; index < grid.frames; ++index) {
    if (cancelled) return std::unexpected(ExportError::cancelled());
    const double time = static_cast<double>(index) / fps;
    const auto picture = source.at(time);
    if (!picture) return std::unexpected(ExportError::readerFailed(picture.error().message));
    if (!*picture) continue;
    const auto changed = renderer_.showScreen(**picture);
    if (!changed) return std::unexpected(textureFailure(changed.error()));
    const bool cameraChanged = renderer_.advanceCamera(time);

    const motion::CameraPose pose = renderer_.pose(time);
    // A stored movie always plays, so its motion is blurred whatever the preview does.
    const motion::CameraPose previousPose =
        renderer_.settings.motionBlurEnabled ? renderer_.pose(std::max(time - 1 / fps, 0.0)) : pose;
    const compositor::CompositePlan plan =
        renderer_.plan(pose, previousPose, time, rect, grid.width, grid.height);
    const CompositeDamage damage = target->draw(
        renderer_, plan, {.screen = *changed, .camera = cameraChanged}, clearColor, redraw_);
    if (!sink(download->download(target->texture(), target->framebuffer(), damage,
                                 renderer_.uniformBuffers()))) {
      return statistics;
    }
    count(damage, statistics);
    if (statistics.frames % framesPerReport == 0) {
      progress(std::min(static_cast<double>(index) / static_cast<double>(grid.frames), 1.0));
    }
  }
  if (cancelled) return std::unexpected(ExportError::cancelled());
  return statistics;
}

}  // namespace vesk::exporting
