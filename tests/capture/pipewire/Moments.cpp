#include "capture/pipewire/Moments.h"

#include <algorithm>
#include <utility>

namespace vesk::capture::pipewire::test {

Moments every(media::HostTime period, media::HostTime length) {
  return [period, length](media::HostTime time) { return time % period < length; };
}

Moments at(std::vector<media::HostTime> times, media::HostTime length) {
  return [times = std::move(times), length](media::HostTime time) {
    return std::ranges::any_of(
        times, [&](media::HostTime begin) { return time >= begin && time < begin + length; });
  };
}

}  // namespace vesk::capture::pipewire::test
