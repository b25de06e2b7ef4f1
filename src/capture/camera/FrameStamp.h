#pragma once

#include <chrono>
#include <optional>

#include "media/HostTime.h"

namespace vesk::capture::camera {

/// When a frame was taken: as its camera says, unless that goes by another clock, which shows in a
/// time more than a second before its arrival, or after it.
[[nodiscard]] constexpr media::HostTime frameStamp(std::optional<media::HostTime> taken,
                                                   media::HostTime arrival) {
  const bool isCredible = taken && *taken <= arrival && *taken >= arrival - std::chrono::seconds{1};
  return isCredible ? *taken : arrival;
}

}  // namespace vesk::capture::camera
