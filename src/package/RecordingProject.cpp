#include "package/RecordingProject.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <system_error>
#include <utility>

#include "package/EventLog.h"
#include "package/FileLimits.h"
#include "package/HugePages.h"
#include "package/Log.h"
#include "package/PackageFile.h"

namespace vesk::package {

namespace {

/// Ascending by time; what is no number stands at the end, so that the order stays an order.
bool isEarlier(const RecordedEvent& a, const RecordedEvent& b) {
  return a.t < b.t || (std::isnan(b.t) && !std::isnan(a.t));
}

void sortByTime(std::vector<RecordedEvent>& events) {
  // A log is in order unless its writer was disturbed.
  if (std::ranges::is_sorted(events, isEarlier)) return;
  std::ranges::stable_sort(events, isEarlier);
}

/// The view that collects a kind, or null.
std::vector<RecordedEvent>* viewOf(RecordingProject& project, RecordedEvent::Kind kind) {
  switch (kind) {
    case RecordedEvent::Kind::move:
      return &project.moves;
    case RecordedEvent::Kind::click:
      return &project.clicks;
    case RecordedEvent::Kind::key:
      return &project.keys;
    case RecordedEvent::Kind::appChange:
      return &project.appChanges;
    case RecordedEvent::Kind::gap:
      return &project.gaps;
    case RecordedEvent::Kind::up:
    case RecordedEvent::Kind::scroll:
    case RecordedEvent::Kind::zoomIn:
    case RecordedEvent::Kind::zoomOut:
      return nullptr;
  }
  std::unreachable();
}

/// Fills the views in one pass, with room made to measure by a pass that only counts.
void deriveViews(RecordingProject& project) {
  std::array<std::size_t, recordedEventKinds.size()> counts{};
  for (const auto& event : project.events) ++counts.at(static_cast<std::size_t>(event.type));
  for (const auto kind : recordedEventKinds) {
    auto* view = viewOf(project, kind);
    if (view == nullptr) continue;
    view->reserve(counts.at(static_cast<std::size_t>(kind)));
    preferHugePages(view->data(), view->capacity() * sizeof(RecordedEvent));
  }
  for (const auto& event : project.events) {
    if (auto* view = viewOf(project, event.type)) view->push_back(event);
  }
}

/// A media file that a take may lack. One that is refused counts as lacking, with a log entry.
std::optional<std::filesystem::path> optionalMedia(const std::filesystem::path& package,
                                                   std::string_view name) {
  const auto file = packageFile(package, name);
  if (!file) {
    log(LogCategory::project).error("{}", file.error().message);
    return std::nullopt;
  }
  return *file;
}

void logBadLines(std::size_t count) {
  if (count == 0) return;
  log(LogCategory::project).error("events.jsonl 有 {} 行无法解析（通常是崩溃截断的尾行）", count);
}

void logLoaded(const RecordingProject& project) {
  log(LogCategory::project)
      .info("loaded {} {}x{} dur={:.2f}s events={} clicks={}",
            withoutTrailingSlash(project.url).filename().string(), project.meta.captureWidth,
            project.meta.captureHeight, project.duration(), project.events.size(),
            project.clicks.size());
}

}  // namespace

std::expected<RecordingProject, PackageError> RecordingProject::load(
    const std::filesystem::path& url, Timestamp now) {
  const auto metaText = readPackageFile(url, "meta.json", largestMetaFile);
  if (!metaText) return std::unexpected(metaText.error());
  auto meta = decodeRecordingMeta(*metaText, now);
  if (!meta) return std::unexpected(std::move(meta.error()));

  auto eventText = readPackageFile(url, "events.jsonl", largestEventLogFile);
  if (!eventText) return std::unexpected(std::move(eventText.error()));
  auto eventLog = decodeEventLog(*std::move(eventText));
  if (!eventLog) return std::unexpected(std::move(eventLog.error()));
  logBadLines(eventLog->badLines);

  auto project = make(url, *std::move(meta), std::move(eventLog->events));
  logLoaded(project);
  return project;
}

RecordingProject RecordingProject::make(std::filesystem::path url, RecordingMeta meta,
                                        std::vector<RecordedEvent> events) {
  sortByTime(events);
  RecordingProject project;
  project.url = std::move(url);
  project.meta = std::move(meta);
  project.events = std::move(events);
  deriveViews(project);
  return project;
}

std::filesystem::path RecordingProject::screenURL() const {
  return url / "screen.mov";
}

std::optional<std::filesystem::path> RecordingProject::cameraURL() const {
  return optionalMedia(url, "camera.mov");
}

std::optional<std::filesystem::path> RecordingProject::micURL() const {
  return optionalMedia(url, "mic.m4a");
}

double RecordingProject::duration() const {
  if (meta.duration) return *meta.duration;
  return events.empty() ? 0 : events.back().t;
}

std::filesystem::path withoutTrailingSlash(const std::filesystem::path& url) {
  return (url / "").parent_path();
}

std::vector<std::filesystem::path> listPackages(const std::filesystem::path& root) {
  std::vector<std::filesystem::path> packages;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(root, error), end; !error && entry != end;
       entry.increment(error)) {
    const auto& path = entry->path();
    const bool isHidden = path.filename().native().starts_with('.');
    if (!isHidden && path.extension() == ".recording") packages.push_back(path);
  }
  if (error) return {};
  std::ranges::sort(packages, std::ranges::greater{},
                    [](const auto& path) { return path.filename().native(); });
  return packages;
}

}  // namespace vesk::package
