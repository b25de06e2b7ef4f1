#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "compositor/CompositeTarget.h"
#include "compositor/PictureDownload.h"
#include "compositor/PictureTexture.h"
#include "compositor/PreviewRenderer.h"
#include "export/RenderLoop.h"
#include "export/SourceFrames.h"
#include "gpu/Device.h"
#include "gpu/SurfacelessContext.h"
#include "media/VideoReader.h"
#include "motion/CameraTrack.h"
#include "motion/SmartZoom.h"
#include "package/RecordingProject.h"

// What the parts of an export cost for one frame at 1920×1080, and how the frames of a take come
// about. The take is the sample, or the package that the environment variable VESK_TAKE names.
namespace {

using namespace vesk;
using compositor::CompositeDamage;
using compositor::CompositePlan;
using compositor::CompositeTarget;
using compositor::PictureDownload;

constexpr int width = 1920;
constexpr int height = 1080;
constexpr glm::vec4 black{0, 0, 0, 1};

template <typename Value, typename Error>
Value valueOf(std::expected<Value, Error> outcome) {
  if (!outcome) throw std::runtime_error(outcome.error().message);
  return *std::move(outcome);
}

std::filesystem::path takeFolder() {
  const char* named = std::getenv("VESK_TAKE");  // NOLINT: no thread has been started yet
  return named != nullptr ? named : VESK_SOURCE_DIR "/samples/tour.recording";
}

/// A renderer on a context of its own, bound to the take.
struct Stage {
  gpu::SurfacelessContext context =
      valueOf(gpu::SurfacelessContext::create(gpu::SurfacelessContext::Diagnostics::off));
  gpu::Device device = valueOf(gpu::Device::current());
  std::shared_ptr<const package::RecordingProject> project =
      std::make_shared<const package::RecordingProject>(
          valueOf(package::RecordingProject::load(takeFolder(), package::Timestamp{})));
  std::unique_ptr<compositor::PreviewRenderer> renderer =
      valueOf(compositor::PreviewRenderer::create(device));

  Stage() {
    renderer->loadForExport(project);
    compositor::CompositeSettings& settings = renderer->settings;
    settings.cameraTrack =
        motion::buildTrack(motion::combinedSegments(*project, motion::Sensitivity::standard, true),
                           motion::CursorTrack(*project), project->duration(), settings.camera3D,
                           settings.transitionEase);
  }

  /// The first pictures of the take, two that differ if it has such.
  std::vector<media::VideoFrame> pictures() const {
    media::VideoReader reader = valueOf(media::VideoReader::open(project->screenURL()));
    std::vector<media::VideoFrame> frames;
    while (frames.size() < 30) {
      const auto frame = valueOf(reader.next());
      if (!frame) break;
      frames.push_back(*frame);
    }
    return {frames.front(), frames.back()};
  }
};

/// Reading one pixel waits for all that is to be drawn there.
void finishDrawing(const gpu::Framebuffer& framebuffer) {
  std::array<std::byte, 4> pixel{};
  framebuffer.read(pixel.data(), pixel.size(), {0, 0, 1, 1});
}

/// A composite that is zoomed in and pans by this many pixels from frame to frame.
CompositePlan panningPlan(const Stage& stage, double pixels) {
  motion::CameraPose pose;
  pose.framing = 1.5;
  pose.motionBlur = 1;
  motion::CameraPose before = pose;
  before.target.x += static_cast<float>(pixels / (pose.framing * width));
  return stage.renderer->plan(pose, before, 1.0, stage.renderer->contentRect(width, height), width,
                              height);
}

/// The argument is the motion in pixels; the counter says how many taps the blur takes for it.
void redrawEverything(benchmark::State& state) {
  const Stage stage;
  valueOf(stage.renderer->showScreen(stage.pictures().front()));
  CompositeTarget target = valueOf(CompositeTarget::create(stage.device, width, height));
  const CompositePlan plan = panningPlan(stage, static_cast<double>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    target.draw(*stage.renderer, plan, {}, black, CompositeTarget::Redraw::always);
    finishDrawing(target.framebuffer());
  }
  state.counters["taps"] = plan.frame ? plan.frame->sampling.taps : 0;
}
BENCHMARK(redrawEverything)
    ->Arg(0)
    ->Arg(2)
    ->Arg(8)
    ->Arg(20)
    ->Arg(40)
    ->Arg(62)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// A new picture of the take, from its planes to the texture that is drawn.
void uploadAndConvert(benchmark::State& state) {
  const Stage stage;
  const std::vector<media::VideoFrame> pictures = stage.pictures();
  auto texture = valueOf(compositor::PictureTexture::create());
  gpu::UniformBuffers& uniforms = stage.renderer->uniformBuffers();
  valueOf(texture.show(stage.device, pictures.front(), uniforms));
  const auto target =
      valueOf(gpu::Framebuffer::create(texture.texture(gpu::TextureBinding::Levels::first)));
  std::size_t next = 1;
  gpu::PixelRect changed;
  for ([[maybe_unused]] auto _ : state) {
    changed = valueOf(texture.show(stage.device, pictures[next++ % 2], uniforms));
    finishDrawing(target);
  }
  state.counters["changed"] = static_cast<double>(changed.width) * changed.height /
                              (static_cast<double>(texture.width()) * texture.height());
}
BENCHMARK(uploadAndConvert)->Unit(benchmark::kMillisecond)->UseRealTime();

void readBack(benchmark::State& state) {
  const Stage stage;
  valueOf(stage.renderer->showScreen(stage.pictures().front()));
  CompositeTarget target = valueOf(CompositeTarget::create(stage.device, width, height));
  target.draw(*stage.renderer, panningPlan(stage, 0), {}, black, CompositeTarget::Redraw::always);
  constexpr std::size_t stride = std::size_t{4} * width;
  std::vector<std::byte> pixels(stride * height);
  for ([[maybe_unused]] auto _ : state) {
    target.framebuffer().read(pixels.data(), stride, target.framebuffer().bounds());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(readBack)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Read-back and conversion to planes, the conversion where the argument says.
void download(benchmark::State& state) {
  const Stage stage;
  valueOf(stage.renderer->showScreen(stage.pictures().front()));
  CompositeTarget target = valueOf(CompositeTarget::create(stage.device, width, height));
  target.draw(*stage.renderer, panningPlan(stage, 0), {}, black, CompositeTarget::Redraw::always);
  const auto conversion = static_cast<PictureDownload::Conversion>(state.range(0));
  auto planes = valueOf(PictureDownload::create(stage.device, width, height, conversion));
  const CompositeDamage everything{.isEverything = true, .rects = {}};
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(planes.download(target.texture(), target.framebuffer(), everything,
                                             stage.renderer->uniformBuffers()));
  }
  state.SetLabel(conversion == PictureDownload::Conversion::onProcessor ? "on the processor"
                                                                        : "on graphics");
}
BENCHMARK(download)
    ->Arg(static_cast<int>(PictureDownload::Conversion::onProcessor))
    ->Arg(static_cast<int>(PictureDownload::Conversion::onGraphics))
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// The whole take in its own size, all but the encoding. The counters are shares of its frames;
/// the argument is 1 where everything is redrawn for each frame.
void renderTake(benchmark::State& state) {
  exporting::ExportStatistics statistics;
  for ([[maybe_unused]] auto _ : state) {
    const Stage stage;
    media::VideoReader reader = valueOf(media::VideoReader::open(stage.project->screenURL()));
    const media::VideoInfo info = reader.info();
    const double frames = stage.project->duration() * static_cast<double>(stage.project->meta.fps);
    exporting::RenderLoop loop(stage.device, *stage.renderer,
                               static_cast<CompositeTarget::Redraw>(state.range(0)),
                               PictureDownload::preferredConversion(stage.device));
    exporting::SourceFrames source([&] { return reader.next(); });
    const std::atomic<bool> cancelled = false;
    const auto outcome = loop.run(
        {.width = info.width & ~1,
         .height = info.height & ~1,
         .fps = stage.project->meta.fps,
         .frames = std::max(std::llround(frames), 1LL)},
        source, [](const auto&) { return true; }, [](double) {}, cancelled);
    if (!outcome) {
      state.SkipWithError(outcome.error().description().c_str());
      return;
    }
    statistics = *outcome;
  }
  const auto share = [&](std::int64_t count) {
    return static_cast<double>(count) / static_cast<double>(statistics.frames);
  };
  state.counters["sentAgain"] = share(statistics.sentAgain);
  state.counters["partlyRedrawn"] = share(statistics.partlyRedrawn);
  state.counters["fullyRedrawn"] = share(statistics.fullyRedrawn);
  state.SetItemsProcessed(state.iterations() * statistics.frames);
}
BENCHMARK(renderTake)
    ->Arg(static_cast<int>(CompositeTarget::Redraw::changed))
    ->Arg(static_cast<int>(CompositeTarget::Redraw::always))
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

}  // namespace
