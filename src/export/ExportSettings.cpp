#include "export/ExportSettings.h"

#include <algorithm>
#include <cmath>

namespace vesk::exporting {
namespace {

using Format = ExportSettings::Format;
using Resolution = ExportSettings::Resolution;

std::optional<std::int64_t> targetHeight(Resolution resolution) {
  switch (resolution) {
    case Resolution::p2160:
      return 2160;
    case Resolution::p1440:
      return 1440;
    case Resolution::p1080:
      return 1080;
    case Resolution::p720:
      return 720;
    case Resolution::source:
      break;
  }
  return std::nullopt;
}

// Chroma is stored for pairs of pixels, so both sides must be even.
std::int64_t roundedToEven(std::int64_t size) {
  return size - (size & 1);
}

template <typename Cases>
auto caseWithRawValue(const Cases& cases, std::string_view raw)
    -> std::optional<typename Cases::value_type> {
  const auto found = std::ranges::find_if(cases, [&](auto each) { return rawValue(each) == raw; });
  if (found == cases.end()) return std::nullopt;
  return *found;
}

}  // namespace

ExportSettings::Size ExportSettings::outputSize(std::int64_t sourceWidth,
                                                std::int64_t sourceHeight) const {
  const auto target = targetHeight(resolution);
  if (!target || sourceHeight < 1 || sourceHeight <= *target) {
    return {.width = roundedToEven(sourceWidth), .height = roundedToEven(sourceHeight)};
  }
  const double scale = static_cast<double>(*target) / static_cast<double>(sourceHeight);
  const auto width = std::llround(scale * static_cast<double>(sourceWidth));
  return {.width = roundedToEven(width), .height = *target};
}

std::int64_t ExportSettings::bitRate(std::int64_t width, std::int64_t height) const {
  return static_cast<std::int64_t>(
      bppCoefficient * (static_cast<double>(width * height) * static_cast<double>(fps)));
}

std::int64_t ExportSettings::estimatedBytes(std::int64_t width, std::int64_t height,
                                            double duration) const {
  constexpr double bytesPerBit = 0.125;
  return static_cast<std::int64_t>(duration * static_cast<double>(bitRate(width, height)) *
                                   bytesPerBit);
}

std::string_view rawValue(Format format) {
  return format == Format::mp4 ? "MP4" : "MOV";
}

std::string_view rawValue(Resolution resolution) {
  switch (resolution) {
    case Resolution::p2160:
      return "4K";
    case Resolution::p1440:
      return "1440p";
    case Resolution::p1080:
      return "1080p";
    case Resolution::p720:
      return "720p";
    case Resolution::source:
      break;
  }
  return "原始";
}

std::optional<Format> exportFormat(std::string_view raw) {
  return caseWithRawValue(ExportSettings::allFormats, raw);
}

std::optional<Resolution> exportResolution(std::string_view raw) {
  return caseWithRawValue(ExportSettings::allResolutions, raw);
}

std::string_view helpLine(Format format) {
  return format == Format::mp4 ? "H.264 · 兼容性最好，随处可播" : "HEVC · 同画质体积约小 40%";
}

}  // namespace vesk::exporting
