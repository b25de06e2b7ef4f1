#include "editor/SessionStage.h"

#include <fmt/format.h>

#include "package/TrashFolder.h"

namespace vesk::editor::test {

using package::RecordedEvent;

Sessions::Sessions() : defaults_(folder.path() / "defaults.json") {
  qtApplication();
  std::filesystem::create_directories(library());
  static_cast<void>(defaults_.set("recordingLibraryPath", library().string()));
  library_.emplace(package::RecordingLibrary::Surroundings{
      .defaults = defaults_,
      .trashFolder = package::TrashFolder(package::TrashFolder::currentSurroundings()),
      .makeThumbnail = {},
      .askForFolder = {},
      .now = [] { return package::Timestamp{}; }});
}

std::filesystem::path Sessions::putTake(const std::string& name,
                                        const std::vector<RecordedEvent>& events, double duration,
                                        const package::RecordingMeta& base) {
  package::RecordingMeta meta = base;
  meta.captureWidth = 128;
  meta.captureHeight = 72;
  meta.duration = duration;
  std::string log;
  for (const RecordedEvent& event : events) log += package::encodeRecordedEvent(event) + "\n";
  const std::string package = "library/" + name + ".recording/";
  folder.put(package + "meta.json", package::encodeRecordingMeta(meta));
  return folder.put(package + "events.jsonl", log).parent_path();
}

std::filesystem::path Sessions::putMarkedTake(const std::string& name) {
  using Kind = RecordedEvent::Kind;
  return putTake(name, {markAt(2, Kind::zoomIn, 0.3, 0.3), markAt(5, Kind::zoomOut, 0.3, 0.3),
                        markAt(7, Kind::zoomIn, 0.7, 0.6), markAt(10, Kind::zoomOut, 0.7, 0.6)});
}

std::unique_ptr<PreviewController> Sessions::makeSession() {
  return std::make_unique<PreviewController>(
      PreviewController::Surroundings{.library = *library_,
                                      .sound = sound,
                                      .hostTime = [this] { return hostTime; },
                                      .wallClock = [this] { return wallClock; }});
}

std::string Sessions::times(const PreviewController& session) {
  std::string text;
  for (const motion::ZoomSegment& segment : session.timeline().segments) {
    text += fmt::format("{}{:.3f}-{:.3f}", text.empty() ? "" : " ", segment.start, segment.end);
  }
  return text;
}

}  // namespace vesk::editor::test
