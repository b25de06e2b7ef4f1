#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vesk::media {

enum class PictureCodec { hevc, h264 };

/// One way to encode pictures while they are being captured.
struct CaptureEncoder {
  enum class Place { processor, vaapi, nvenc, qsv };

  std::string_view name;  ///< unique, to be stored
  PictureCodec codec = PictureCodec::hevc;
  Place place = Place::processor;
  const char* encoder = "";          ///< libav's name of it
  const char* preset = nullptr;      ///< speed against size, if it is to be set
  const char* tune = nullptr;        ///< likewise
  const char* parameters = nullptr;  ///< further ones, where the encoder takes them as one text
};

/// All that are known, the ones to be preferred first.
[[nodiscard]] std::span<const CaptureEncoder> captureEncoders();

[[nodiscard]] std::optional<CaptureEncoder> captureEncoderNamed(std::string_view name);

/// The encoder that works on every machine: H.264 on the processor, at the highest speed.
[[nodiscard]] const CaptureEncoder& plainestCaptureEncoder();

/// Of a track of pictures that is recorded.
struct PictureTrackSettings {
  int width = 0;             ///< pixels, positive and even
  int height = 0;            ///< pixels, positive and even
  int fps = 60;              ///< pictures a second at most
  std::int64_t bitRate = 0;  ///< in bits per second, at `fps` pictures a second
  bool operator==(const PictureTrackSettings&) const = default;
};

/// The bit rate for so many bits a pixel and picture.
[[nodiscard]] constexpr std::int64_t captureBitRate(double bitsPerPixel, int width, int height,
                                                    int fps) {
  const auto pixels = static_cast<double>(std::int64_t{width} * height);
  return static_cast<std::int64_t>(bitsPerPixel * pixels * static_cast<double>(fps));
}

}  // namespace vesk::media
