#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "motion/ZoomSegment.h"

namespace vesk::motion {

/// How readily clicks turn into effects.
enum class Sensitivity { conservative, standard, dense };

inline constexpr std::array allSensitivities{Sensitivity::conservative, Sensitivity::standard,
                                             Sensitivity::dense};

std::string_view rawValue(Sensitivity sensitivity);
std::optional<Sensitivity> sensitivity(std::string_view raw);
/// Seconds without a click after which the next one counts.
double silenceThreshold(Sensitivity sensitivity);
/// Seconds between clicks from which they fall into separate groups.
double clusterGap(Sensitivity sensitivity);

/// Above this coverage a timeline is too dense.
inline constexpr double densityLimit = 0.7;

/// Share of `duration` covered by enabled segments, 0…1; 0 when duration is not above 0.
double coverage(const std::vector<ZoomSegment>& segments, double duration);

/// The editor's model of what stands on the timeline.
struct EffectTimeline {
  std::vector<ZoomSegment> segments;
  Sensitivity sensitivity = Sensitivity::standard;
  bool isTooDense = false;

  double coverage(double duration) const;
  bool operator==(const EffectTimeline&) const = default;
};

}  // namespace vesk::motion
