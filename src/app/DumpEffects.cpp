#include "app/DumpEffects.h"

#include <fmt/format.h>

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "app/PackageLocator.h"
#include "motion/MotionReport.h"
#include "package/RecordingProject.h"

namespace vesk::app {
namespace {

/// A day. The camera track of a longer take, which only a damaged log can claim, would not fit into
/// memory.
constexpr double longestTake = 24 * 3600;

motion::ReportOptions reportOptions(const CommandLine& commandLine) {
  motion::ReportOptions options;
  options.gate = commandLine.has("--gate");
  options.easeProfile = commandLine.has("--ease-profile");
  options.camera3D = {.enabled = commandLine.has("--3d"),
                      .fov = commandLine.number("--fov").value_or(28),
                      .yaw = commandLine.number("--yaw").value_or(12),
                      .pitch = commandLine.number("--pitch").value_or(6),
                      .roll = 0};
  options.ease =
      commandLine.value("--ease").and_then(motion::cameraEase).value_or(motion::CameraEase::smooth);
  return options;
}

/// The project, or the line that says why there is none.
std::expected<package::RecordingProject, std::string> openProject(const CommandContext& context) {
  const auto url = findPackage(context.commandLine, context.libraryRoot);
  if (!url) {
    return std::unexpected("找不到录制包。先录一段，或用 --package <路径> 指定。");
  }
  auto project = package::RecordingProject::load(*url, context.now);
  if (!project) {
    return std::unexpected("读取失败：" + project.error().message);
  }
  if (project->duration() > longestTake) {
    return std::unexpected(fmt::format("读取失败：录制包的时长 {:g} 秒超过了上限 {:g} 秒",
                                       project->duration(), longestTake));
  }
  return *std::move(project);
}

}  // namespace

int dumpEffects(const CommandContext& context) {
  auto project = openProject(context);
  if (!project) {
    fmt::print(context.out, "{}\n", project.error());
    return 1;
  }
  const motion::DumpCtx report =
      motion::makeDumpCtx(*std::move(project), reportOptions(context.commandLine));
  const motion::MotionCriteria measured = motion::measureCriteria(report);
  const std::string text = context.commandLine.has("--json") ? motion::reportJson(report, measured)
                                                             : motion::reportText(report, measured);
  std::fwrite(text.data(), 1, text.size(), context.out);
  return motion::reportExitCode(report, measured);
}

}  // namespace vesk::app
