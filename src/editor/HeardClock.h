#pragma once

#include "media/HostTime.h"

namespace vesk::editor {

/// What has been heard of a run of sound, made out of what the output tells now and then. It goes
/// at the pace of the host's clock and slides to where the output says it is, so that it neither
/// jumps nor shakes, and it goes on by itself where the output falls silent. Instants are given in
/// the order of time; seconds are those of the run.
class HeardClock {
 public:
  /// How long the first sample may take to be heard. Without word from the output until then, the
  /// run goes on as if it were heard from then on.
  static constexpr double longestStart = 0.5;
  /// How fast the clock slides at the most, beside a second each second.
  static constexpr double fastestSlide = 0.05;

  explicit HeardClock(media::HostTime start);

  /// The output says that `seconds` are heard at `now`; below 0, that the first sample is to come.
  void report(media::HostTime now, double seconds);

  /// Below 0 until the first sample is heard. Never less than at an instant before.
  [[nodiscard]] double heard(media::HostTime now) const;

 private:
  [[nodiscard]] double slid(double elapsed) const;

  media::HostTime anchor_;
  double atAnchor_;
  double floor_;        ///< not below, where the first sample takes longer than it seemed
  double toSlide_ = 0;  ///< from the anchor on, in seconds
};

}  // namespace vesk::editor
