#include "editor/HeardClock.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace vesk::editor {
namespace {

/// In this time the clock makes up for 63 % of a small difference. Long beside the time between two
/// reports, so that their errors even out; short beside a drift.
constexpr double slideTime = 0.5;
/// Greater differences are made up for at an even pace.
constexpr double smallDifference = HeardClock::fastestSlide * slideTime;

}  // namespace

HeardClock::HeardClock(media::HostTime start)
    : anchor_{start}, atAnchor_{-longestStart}, floor_{-longestStart} {}

void HeardClock::report(media::HostTime now, double seconds) {
  const double shown = heard(now);
  anchor_ = now;
  if (shown < 0) {  // nobody has heard anything that a jump would tear apart
    atAnchor_ = seconds;
    floor_ = shown;
    toSlide_ = 0;
  } else {
    atAnchor_ = shown;
    toSlide_ = seconds - shown;
  }
}

double HeardClock::heard(media::HostTime now) const {
  const double elapsed = std::max(media::secondsOf(now - anchor_), 0.0);
  return std::max(atAnchor_ + elapsed + slid(elapsed), floor_);
}

/// How much of the difference has been made up for: evenly, then ever more slowly.
double HeardClock::slid(double elapsed) const {
  const double even = std::max(std::abs(toSlide_) - smallDifference, 0.0);
  const double evenTime = even / fastestSlide;
  if (elapsed < evenTime) {
    return std::copysign(elapsed * fastestSlide, toSlide_);
  }
  const double rest = std::abs(toSlide_) - even;
  const double made = even + rest * (1 - std::exp((evenTime - elapsed) / slideTime));
  return std::copysign(made, toSlide_);
}

}  // namespace vesk::editor
