#include "editor/TimelineSnap.h"

#include <cmath>

namespace vesk::editor {
namespace {

using EventKind = package::RecordedEvent::Kind;

bool isManualMark(const package::RecordedEvent& event) {
  return event.type == EventKind::zoomIn || event.type == EventKind::zoomOut;
}

}  // namespace

SnapMarks::SnapMarks(const package::RecordingProject& project) {
  clicks.reserve(project.clicks.size());
  for (const auto& click : project.clicks) {
    clicks.push_back(click.t);
  }
  for (const auto& event : project.events) {
    if (isManualMark(event)) manualMarks.push_back(event.t);
  }
}

std::vector<double> snapCandidates(double playhead, const SnapMarks& marks,
                                   std::span<const motion::ZoomSegment> segments,
                                   const std::string& dragged) {
  std::vector<double> candidates;
  candidates.reserve(1 + marks.clicks.size() + marks.manualMarks.size() + 2 * segments.size());
  candidates.push_back(playhead);
  candidates.insert(candidates.end(), marks.clicks.begin(), marks.clicks.end());
  candidates.insert(candidates.end(), marks.manualMarks.begin(), marks.manualMarks.end());
  for (const auto& segment : segments) {
    if (segment.id == dragged) continue;
    candidates.push_back(segment.start);
    candidates.push_back(segment.end);
  }
  return candidates;
}

std::optional<double> snap(double t, double distance, std::span<const double> candidates) {
  std::optional<double> nearest;
  for (const double candidate : candidates) {
    const double away = std::abs(candidate - t);
    if (away < distance) {
      nearest = candidate;
      distance = away;
    }
  }
  return nearest;
}

}  // namespace vesk::editor
