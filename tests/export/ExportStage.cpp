#include "export/ExportStage.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "media/VideoReader.h"
#include "motion/CameraTrack.h"
#include "motion/SmartZoom.h"

namespace vesk::exporting {
namespace {

template <typename Value, typename Error>
Value valueOf(std::expected<Value, Error> outcome) {
  if (!outcome) throw std::runtime_error(outcome.error().message);
  return *std::move(outcome);
}

}  // namespace

compositor::CompositeSettings settingsFor(const package::RecordingProject& project, Look look) {
  compositor::CompositeSettings settings;
  settings.camera3D.enabled = look.perspective;
  settings.frameStyle.enabled = look.framed;
  settings.pip.shadow = look.cameraShadow;
  settings.cameraTrack = motion::buildTrack(
      motion::combinedSegments(project, motion::Sensitivity::standard, true),
      motion::CursorTrack(project), project.duration(), settings.camera3D, settings.transitionEase);
  return settings;
}

package::RecordingProject loadTake(const std::filesystem::path& package) {
  return valueOf(package::RecordingProject::load(package, package::Timestamp{}));
}

package::RecordingProject plainProject(const std::filesystem::path& package, double duration) {
  package::RecordingMeta meta;
  meta.captureWidth = 128;
  meta.captureHeight = 72;
  meta.duration = duration;
  return package::RecordingProject::make(package, meta, {});
}

package::RecordingProject startingAt(const package::RecordingProject& project, double seconds) {
  std::vector<package::RecordedEvent> events;
  for (package::RecordedEvent event : project.events) {
    event.t -= seconds;
    if (event.t >= 0) events.push_back(std::move(event));
  }
  package::RecordingMeta meta = project.meta;
  meta.duration = project.duration() - seconds;
  return package::RecordingProject::make(project.url, meta, std::move(events));
}

SourceFrames::Next picturesFrom(const std::filesystem::path& movie, double seconds) {
  const auto reader =
      std::make_shared<media::VideoReader>(valueOf(media::VideoReader::open(movie)));
  auto first = reader->next();
  while (first && first->has_value() && (*first)->pts < seconds) first = reader->next();
  return [reader, first, isFirst = true]() mutable {
    return std::exchange(isFirst, false) ? first : reader->next();
  };
}

media::VideoFrame flatFrame(int luma, double pts, int width, int height) {
  constexpr int grey = 128;
  const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  auto samples = std::make_shared<std::vector<std::byte>>(pixels, static_cast<std::byte>(luma));
  samples->resize(pixels + pixels / 2, static_cast<std::byte>(grey));
  const std::byte* chroma = samples->data() + pixels;
  return {.width = width,
          .height = height,
          .planes = {media::VideoPlane{samples->data(), width, width, height},
                     {chroma, width / 2, width / 2, height / 2},
                     {chroma + pixels / 4, width / 2, width / 2, height / 2}},
          .pts = pts,
          .storage = samples};
}

SourceFrames::Next inTurn(std::vector<media::VideoFrame> frames) {
  return [frames = std::move(frames), next = std::size_t{0}]() mutable
             -> std::expected<std::optional<media::VideoFrame>, media::MediaError> {
    if (next == frames.size()) return std::nullopt;
    return frames[next++];
  };
}

std::size_t fingerprint(const media::I420Picture& picture) {
  constexpr std::size_t factor = 1'099'511'628'211U;  // of the FNV-1a hash, 64 bits
  std::size_t sum = 0;
  for (const media::I420Picture::Plane& plane : picture.planes()) {
    for (int row = 0; row < plane.height; ++row) {
      const auto* samples = reinterpret_cast<const char*>(plane.data + row * plane.stride);
      const std::string_view line(samples, static_cast<std::size_t>(plane.width));
      sum = (sum ^ std::hash<std::string_view>{}(line)) * factor;
    }
  }
  return sum;
}

ExportStage::ExportStage()
    : context_(valueOf(gpu::SurfacelessContext::create(gpu::SurfacelessContext::Diagnostics::on))),
      device_(valueOf(gpu::Device::current())) {}

void ExportStage::TearDown() {
  EXPECT_THAT(device_.debugMessages(), testing::IsEmpty());
}

std::unique_ptr<compositor::PreviewRenderer> ExportStage::makeRenderer(
    const package::RecordingProject& project, const compositor::CompositeSettings& settings) {
  auto renderer = valueOf(compositor::PreviewRenderer::create(device_));
  renderer->loadForExport(std::make_shared<const package::RecordingProject>(project));
  renderer->settings = settings;
  return renderer;
}

}  // namespace vesk::exporting
