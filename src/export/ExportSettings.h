#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vesk::exporting {

/// What kind of file the user wants.
struct ExportSettings {
  /// Container, and by it the codec. The raw value is the label as well.
  enum class Format { mp4, mov };
  /// Height of the output; a height that would enlarge the picture is ignored.
  enum class Resolution { source, p2160, p1440, p1080, p720 };

  static constexpr std::array allFormats{Format::mp4, Format::mov};
  static constexpr std::array allResolutions{Resolution::source, Resolution::p2160,
                                             Resolution::p1440, Resolution::p1080,
                                             Resolution::p720};
  static constexpr std::array offeredRates{60, 30};

  struct Size {
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool operator==(const Size&) const = default;
  };

  Format format = Format::mp4;
  Resolution resolution = Resolution::source;
  std::int64_t fps = 60;
  double bppCoefficient = 0.08;  ///< bits per pixel and frame
  bool operator==(const ExportSettings&) const = default;

  /// The output's size in pixels, always even.
  Size outputSize(std::int64_t sourceWidth, std::int64_t sourceHeight) const;
  /// Bits per second of the picture.
  std::int64_t bitRate(std::int64_t width, std::int64_t height) const;
  /// Estimated size of the picture track in bytes.
  /// @param duration seconds.
  std::int64_t estimatedBytes(std::int64_t width, std::int64_t height, double duration) const;
};

std::string_view rawValue(ExportSettings::Format format);
std::string_view rawValue(ExportSettings::Resolution resolution);
std::optional<ExportSettings::Format> exportFormat(std::string_view raw);
std::optional<ExportSettings::Resolution> exportResolution(std::string_view raw);
/// One line under the format picker.
std::string_view helpLine(ExportSettings::Format format);

}  // namespace vesk::exporting
