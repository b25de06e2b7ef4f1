#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "motion/DumpCtx.h"
#include "motion/EaseSpan.h"

// Whether a camera move feels right, in numbers. Everything but the zoom factor is measured on the
// visible rectangle.
namespace vesk::motion {

/// The result of one criterion. Distances are in picture units.
struct Criterion {
  int number = 0;
  std::string_view name;
  double value = 0;          ///< what is tested, unrounded
  double limit = 0;          ///< fails above it
  std::optional<double> at;  ///< time of the worst point in seconds; nothing when none stands out
  bool pass = true;
  std::string failure;  ///< empty when it passes, and for number 10, which only warns

  /// When it is worst, for texts; a criterion that fails has a worst point.
  [[nodiscard]] double when() const { return at.value_or(0); }
};

/// The ten criteria, and what a report says beside them.
struct MotionCriteria {
  std::array<Criterion, 10> criteria;
  double largestEaseInReversal = 0;       ///< beside number 3
  std::optional<EaseDetail> worstEaseIn;  ///< the span of number 4's worst frame
  int explicitResets = 0;                 ///< beside number 6
  int incompleteResets = 0;               ///< of those, how many failed
  double largestEaseOutReversal = 0;      ///< beside number 7
  int takeoverFrames = 0;  ///< beside number 8: frames that slid out during the takeover
  double movingShare = 0;  ///< beside number 9: share of hold frames outside the dead zone

  /// @param number 1…10.
  const Criterion& criterion(int number) const {
    return criteria.at(static_cast<std::size_t>(number) - 1);
  }
};

/// Measures a recording. Linear in its frames; the clicks of its cursor track count as that track
/// says.
MotionCriteria measureCriteria(const DumpCtx& context);

/// What a gate holds against a recording: that it has no segments, then the criteria that fail.
std::vector<std::string> failures(const DumpCtx& context, const MotionCriteria& measured);

/// Times of the framing samples that number 1 compares and a report prints.
inline constexpr double framingSampleStep = 0.5;

}  // namespace vesk::motion
