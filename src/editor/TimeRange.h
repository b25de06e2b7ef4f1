#pragma once

namespace vesk::editor {

/// A stretch of the recording with both its ends, in seconds.
struct TimeRange {
  double from = 0;
  double to = 0;

  bool holds(double time) const { return from <= time && time <= to; }
  bool overlaps(double start, double end) const { return start <= to && end >= from; }
  bool operator==(const TimeRange&) const = default;
};

}  // namespace vesk::editor
