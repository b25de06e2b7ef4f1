#pragma once

#include <cstdint>

namespace vesk::media {

/// The kinds of movie that can be written: MP4 with H.264 or QuickTime with HEVC.
enum class Container { mp4, mov };

struct VideoSettings {
  Container container = Container::mp4;
  int width = 0;             ///< pixels, positive and even
  int height = 0;            ///< pixels, positive and even
  int fps = 60;              ///< 1…1000
  std::int64_t bitRate = 0;  ///< mean, in bits per second, positive
  int threads = 0;           ///< that encode, 0 to leave it to the encoder
  bool operator==(const VideoSettings&) const = default;
};

}  // namespace vesk::media
