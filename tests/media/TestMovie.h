#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "media/VideoFrame.h"

namespace vesk::media {

/// A small movie of flat pictures, each of another shade, for the reader to read.
struct MovieRecipe {
  std::string encoder = "libx264";
  std::string pixelFormat = "yuv420p";
  std::string profile;
  int width = 128;
  int height = 72;
  int ticksPerSecond = 1000;
  std::vector<std::int64_t> ticks;  ///< when each picture is shown, in order of presentation
  int bFrames = 0;
  int keyFrameInterval = 12;
  std::string movFlags;
  std::optional<ColorMatrix> matrix;
  std::optional<ColorRange> range;
  bool withSound = false;
  int smallerFrom = -1;  ///< from this picture on, half the width and height
  /// May change the bytes of the n-th packet before it is stored.
  std::function<void(int, std::span<std::uint8_t>)> damage;
};

void makeMovie(const std::filesystem::path& file, const MovieRecipe& recipe);

/// Y of picture `index` of a test movie, in 8 bits limited range.
[[nodiscard]] constexpr int shadeOf(int index) {
  return 24 + index * 10 % 200;
}

/// The mean of a picture's Y, on the scale of 8 bits.
[[nodiscard]] double meanLuma(const VideoFrame& frame);

/// 0, step, 2 step…
[[nodiscard]] std::vector<std::int64_t> evenTicks(int count, std::int64_t step,
                                                  std::int64_t first = 0);

/// What a stored movie says of itself, packet by packet, without decoding.
struct StoredMovie {
  struct Packet {
    double pts = 0;
    double duration = 0;
    bool isKey = false;
  };
  std::string codec;
  std::string tag;
  int profile = 0;
  bool saysBt709 = false;  ///< matrix, primaries and transfer
  bool saysLimited = false;
  bool saysCentredChroma = false;
  std::int64_t bitRate = 0;
  std::vector<Packet> packets;     ///< of the picture, in order of presentation
  std::vector<std::string> boxes;  ///< the types of the top-level boxes, in order
};

[[nodiscard]] StoredMovie inspect(const std::filesystem::path& file);

[[nodiscard]] std::string bytesOf(const std::filesystem::path& file);
void writeBytes(const std::filesystem::path& file, std::string_view bytes);

}  // namespace vesk::media
