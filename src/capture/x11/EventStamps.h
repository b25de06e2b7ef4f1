#pragma once

#include <cstdint>

namespace vesk::capture::x11 {

/// The seconds of CLOCK_MONOTONIC of an event of the display server, which counts the milliseconds
/// of that clock and starts again at 0 after 2³² of them (49.7 days).
/// @param now when the event is looked at; less than 24 days from it.
double secondsOfStamp(std::uint32_t stamp, double now);

}  // namespace vesk::capture::x11
