#pragma once

#include <functional>
#include <vector>

#include "media/HostTime.h"

namespace vesk::capture::pipewire::test {

/// When something is to be heard or seen.
using Moments = std::function<bool(media::HostTime)>;

/// The first `length` of every `period` of the clock.
Moments every(media::HostTime period, media::HostTime length);
/// From each of the times on for `length`.
Moments at(std::vector<media::HostTime> times, media::HostTime length);

}  // namespace vesk::capture::pipewire::test
