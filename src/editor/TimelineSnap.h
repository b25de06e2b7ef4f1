#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "motion/ZoomSegment.h"
#include "package/RecordingProject.h"

namespace vesk::editor {

/// What stays put on the timeline of a recording and draws the segments' edges to it.
struct SnapMarks {
  std::vector<double> clicks;
  std::vector<double> manualMarks;
  bool operator==(const SnapMarks&) const = default;

  SnapMarks() = default;
  explicit SnapMarks(const package::RecordingProject& project);
};

/// All times that an edge of the segment `dragged` may snap to; of two equally near, the one that
/// stands first wins: the playhead, the clicks, the manual marks, both edges of every other
/// segment.
std::vector<double> snapCandidates(double playhead, const SnapMarks& marks,
                                   std::span<const motion::ZoomSegment> segments,
                                   const std::string& dragged);

/// The candidate nearest to t, when one lies less than `distance` seconds away.
std::optional<double> snap(double t, double distance, std::span<const double> candidates);

}  // namespace vesk::editor
