#include "capture/x11/EventStamps.h"

namespace vesk::capture::x11 {

double secondsOfStamp(std::uint32_t stamp, double now) {
  const auto nowMilliseconds = static_cast<std::int64_t>(now * 1000);
  // The difference of the lower halves, in the round and with its sign, is the event's age.
  const auto age = static_cast<std::int32_t>(static_cast<std::uint32_t>(nowMilliseconds) - stamp);
  return static_cast<double>(nowMilliseconds - age) / 1000;
}

}  // namespace vesk::capture::x11
