#pragma once

#include <string>

namespace vesk::motion {

/// The time in milliseconds, truncated to a whole number, in decimal: the part of a segment's id
/// that tells when the event that gave birth to it took place.
std::string wholeMilliseconds(double t);

}  // namespace vesk::motion
