#include "editor/TimeText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "editor/TimelineScale.h"

namespace vesk::editor {
namespace {

double readable(double seconds) {
  return std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, mostSeconds);
}

/// How many parts of `perSecond` to a second are full. What a calculation leaves just short of a
/// part counts as full.
std::int64_t fullParts(double seconds, std::int64_t perSecond) {
  constexpr double roundingError = 1e-6;
  const double parts = readable(seconds) * static_cast<double>(perSecond);
  return static_cast<std::int64_t>(std::floor(parts + roundingError));
}

std::string hundredthsText(std::int64_t hundredths) {
  return fmt::format("{:02}:{:02}.{:02}", hundredths / 6000, hundredths / 100 % 60,
                     hundredths % 100);
}

}  // namespace

std::string rulerText(double seconds, bool tenths) {
  const std::int64_t full = fullParts(seconds, 10);
  const std::string text = fmt::format("{}:{:02}", full / 600, full / 10 % 60);
  return tenths ? fmt::format("{}.{}", text, full % 10) : text;
}

// Rounded before it is split, so that the seconds never read 60.
std::string playheadText(double seconds) {
  return hundredthsText(std::llround(readable(seconds) * 100));
}

std::string transportText(double seconds) {
  return hundredthsText(fullParts(seconds, 100));
}

}  // namespace vesk::editor
