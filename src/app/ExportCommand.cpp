#include "app/ExportCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "app/ExportOptions.h"
#include "app/FileSizeText.h"
#include "app/HeadlessRenderer.h"
#include "app/PackageLocator.h"
#include "app/ProgressLine.h"
#include "app/SignalWatch.h"
#include "export/ExportRenderer.h"
#include "export/ExportSettings.h"
#include "package/Log.h"
#include "package/RecordingProject.h"

namespace vesk::app {
namespace {

namespace fs = std::filesystem;
using Clock = ProgressLine::Clock;

int fail(const CommandContext& context, std::string_view message) {
  fmt::print(context.out, "{}\n", message);
  return 1;
}

fs::path withHomeExpanded(std::string_view path) {
  const char* home = std::getenv("HOME");  // NOLINT: no thread has been started yet
  if (home == nullptr || (path != "~" && !path.starts_with("~/"))) return path;
  return fs::path(home) / path.substr(std::min<std::size_t>(path.size(), 2));
}

void printHeading(std::FILE* out, const package::RecordingProject& project, std::size_t segments,
                  const fs::path& output) {
  const fs::path name = project.url.has_filename() ? project.url : project.url.parent_path();
  fmt::print(out, "源  {}  {}×{}  {:.2f}s\n段  {} 个效果段\n出  {}\n\n", name.filename().string(),
             project.meta.captureWidth, project.meta.captureHeight, project.duration(), segments,
             output.string());
  std::fflush(out);
}

void printSuccess(std::FILE* out, double elapsed, double duration, const fs::path& output) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(output, error);
  fmt::print(out, "\n✓ 导出完成\n  耗时 {:.1f}s（源时长 {:.1f}s，{:.1f}× 实时）\n  体积 {}\n",
             elapsed, duration, duration / std::max(elapsed, 0.001),
             fileSizeText(error ? 0 : size));
}

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

int exportMovie(const CommandContext& context) {
  const CommandLine& commandLine = context.commandLine;
  const auto url = findPackage(commandLine, context.libraryRoot);
  if (!url) return fail(context, "找不到录制包");
  auto loaded = package::RecordingProject::load(*url, context.now);
  if (!loaded) {
    package::log(package::LogCategory::exporting).error("{}", loaded.error().message);
    return fail(context, "读取录制包失败");
  }
  const auto project = std::make_shared<const package::RecordingProject>(*std::move(loaded));

  const std::unique_ptr<HeadlessRenderer> headless = HeadlessRenderer::create();
  std::unique_ptr<compositor::PreviewRenderer> renderer;
  if (headless) renderer = headless->makeRenderer();
  if (!renderer) return fail(context, "Metal 初始化失败");
  ExportLook look = exportLook(commandLine, *project);
  renderer->loadForExport(project);
  renderer->settings = std::move(look.settings);

  const fs::path output = withHomeExpanded(commandLine.value("--export").value_or(""));
  printHeading(context.out, *project, look.segments.size(), output);
  const exporting::ExportSettings settings{.fps = project->meta.fps};
  const auto redraw = commandLine.has("--redraw-all") ? exporting::ExportRenderer::Redraw::always
                                                      : exporting::ExportRenderer::Redraw::changed;
  exporting::ExportRenderer exporter(headless->device(), std::move(renderer), redraw);

  const Clock::time_point start = Clock::now();
  const SignalWatch interruption([&] { exporter.cancel(); });
  ProgressLine progress(context.out, ProgressLine::suitableForm(context.out), project->duration(),
                        start);
  const auto statistics = exporter.exportMovie(
      *project, settings, output, [&](double share) { progress.show(share, Clock::now()); });
  progress.end();
  if (!statistics) {
    fmt::print(context.out, "\n✗ 导出失败：{}\n", statistics.error().description());
    return 1;
  }
  package::log(package::LogCategory::exporting)
      .info("frames={} sent again={} partly redrawn={} fully redrawn={}", statistics->frames,
            statistics->sentAgain, statistics->partlyRedrawn, statistics->fullyRedrawn);
  printSuccess(context.out, secondsSince(start), project->duration(), output);
  return 0;
}

}  // namespace vesk::app
