#include "export/ExportRenderer.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

#include "export/AudioMux.h"
#include "export/RenderLoop.h"
#include "export/SourceFrames.h"
#include "export/WriteBehind.h"
#include "media/ReadAhead.h"
#include "media/VideoReader.h"
#include "media/VideoWriter.h"
#include "package/Log.h"
#include "package/PackageFile.h"

namespace vesk::exporting {
namespace {

namespace fs = std::filesystem;

// Far beyond any recording; only a damaged index asks for more.
constexpr double mostFrames = 1e8;

ExportError readerError(const media::MediaError& error) {
  if (error.kind == media::MediaError::Kind::noVideoTrack) return ExportError::noVideoTrack();
  return ExportError::readerFailed(error.message);
}

ExportError writerError(const media::MediaError& error) {
  return ExportError::writerFailed(error.message);
}

std::expected<RenderLoop::Grid, ExportError> frameGrid(const package::RecordingProject& project,
                                                       const ExportSettings& settings,
                                                       const media::VideoInfo& source) {
  const ExportSettings::Size size = settings.outputSize(source.width, source.height);
  const double frames = std::round(project.duration() * static_cast<double>(settings.fps));
  if (!(frames <= mostFrames)) {
    return std::unexpected(ExportError::readerFailed("meta.json 里的录制时长不合理"));
  }
  return RenderLoop::Grid{.width = static_cast<int>(size.width),
                          .height = static_cast<int>(size.height),
                          .fps = settings.fps,
                          .frames = std::max(static_cast<std::int64_t>(frames), std::int64_t{1})};
}

media::VideoSettings videoSettings(const ExportSettings& settings, const RenderLoop::Grid& grid) {
  return {.container = settings.format == ExportSettings::Format::mp4 ? media::Container::mp4
                                                                      : media::Container::mov,
          .width = grid.width,
          .height = grid.height,
          .fps = static_cast<int>(grid.fps),
          .bitRate = settings.bitRate(grid.width, grid.height)};
}

// The raw material is never overwritten, whatever output the user names.
bool liesInPackage(const fs::path& file, const fs::path& package) {
  std::error_code error;
  // Resolved as a whole: a link outside may lead to a file inside.
  const fs::path target = fs::weakly_canonical(fs::absolute(file, error), error);
  const fs::path root = fs::weakly_canonical(fs::absolute(package, error), error);
  const auto [end, rest] = std::ranges::mismatch(root, target);
  return end == root.end();
}

}  // namespace

ExportRenderer::ExportRenderer(const gpu::Device& device,
                               std::unique_ptr<compositor::PreviewRenderer> renderer, Redraw redraw)
    : device_(device), renderer_(std::move(renderer)), redraw_(redraw) {}

std::expected<ExportStatistics, ExportError> ExportRenderer::exportMovie(
    const package::RecordingProject& project, const ExportSettings& settings, const fs::path& to,
    const Progress& progress) {
  spdlog::logger& log = package::log(package::LogCategory::exporting);
  if (!to.has_filename()) {
    return std::unexpected(ExportError::writerFailed("没有给出输出文件的名字"));
  }
  if (liesInPackage(to, project.url)) {
    return std::unexpected(ExportError::writerFailed("输出位置在录制包里面，请换一个文件夹"));
  }
  // A link in the place of the picture must not draw another file of the user's into the movie.
  if (const auto screen = package::packageFile(project.url, "screen.mov"); !screen) {
    return std::unexpected(ExportError::readerFailed(screen.error().message));
  }
  auto reader = media::VideoReader::open(project.screenURL());
  if (!reader) return std::unexpected(readerError(reader.error()));
  const auto grid = frameGrid(project, settings, reader->info());
  if (!grid) return std::unexpected(grid.error());
  const media::VideoSettings video = videoSettings(settings, *grid);
  auto writer = media::VideoWriter::open(to, video);
  if (!writer) return std::unexpected(writerError(writer.error()));
  log.info("export start {}x{}@{} bitrate={}", video.width, video.height, video.fps, video.bitRate);

  media::ReadAhead pictures(std::move(*reader));
  WriteBehind movie(std::move(*writer));
  SourceFrames source([&] { return pictures.next(); });
  RenderLoop loop(device_, *renderer_, redraw_,
                  compositor::PictureDownload::preferredConversion(device_));
  const auto statistics = loop.run(
      *grid, source, [&](auto picture) { return movie.write(std::move(picture)); }, progress,
      cancelled_);
  if (!statistics) return statistics;
  if (const auto finished = movie.finish(); !finished) {
    return std::unexpected(writerError(finished.error()));
  }
  const auto& style = renderer_->settings;
  const AudioGains gains{.system = style.systemVolume, .mic = style.micVolume};
  if (auto sounding = muxAudio(project, to, settings.format, gains); !sounding) {
    return std::unexpected(std::move(sounding.error()));
  }
  progress(1.0);
  log.info("export done frames={} → {}", statistics->frames, to.filename().string());
  return statistics;
}

}  // namespace vesk::exporting
