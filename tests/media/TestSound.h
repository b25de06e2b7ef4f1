#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "media/StereoSample.h"
#include "media/VideoSettings.h"

namespace vesk::media {

/// A file with one sound track for the tests to read.
struct SoundRecipe {
  std::string encoder = "aac";  ///< or "pcm_f32le", or one of 16-bit samples
  std::string encoderOptions;   ///< of libav, "name=value"
  std::string muxer = "ipod";   ///< or "mov"
  std::string muxerOptions;     ///< likewise
  int rate = 48'000;
  int channels = 1;
  double seconds = 1;
  /// The sample at `index` of a channel.
  std::function<float(std::int64_t index, int channel)> wave;
  /// Where a sample stands, for stamps with gaps; by default at its index.
  std::function<std::int64_t(std::int64_t index)> place;
};

void makeSound(const std::filesystem::path& file, const SoundRecipe& recipe);

/// A movie as an export leaves it before the sound comes in: 128×72, 60 frames a second.
void makeSilentMovie(const std::filesystem::path& file, Container container, int frames);

/// A sine of 1 kHz and this amplitude from `start` on for 0.1 s, in seconds; else silence.
[[nodiscard]] std::function<float(std::int64_t, int)> beep(double start, float amplitude = 0.25F,
                                                           int rate = 48'000);
/// The same tone throughout.
[[nodiscard]] std::function<float(std::int64_t, int)> tone(double frequency, float amplitude,
                                                           int rate = 48'000);

/// What a player that heeds edit lists would play of the n-th sound track, from time 0 of the
/// movie on; decoded without the code under test. The track must have 48,000 samples a second.
[[nodiscard]] std::vector<StereoSample> played(const std::filesystem::path& file, int track = 0);

/// Where in the sound the beep starts, in seconds: the 0.1 s with the most of 1 kHz.
[[nodiscard]] double beepTime(const std::vector<StereoSample>& sound);

/// Root of the mean square of both sides between two times.
[[nodiscard]] double loudness(const std::vector<StereoSample>& sound, double from, double to);

struct StoredPacket {
  std::int64_t pts = 0;
  std::int64_t duration = 0;
  std::string bytes;
  bool operator==(const StoredPacket&) const = default;
};

/// The packets of the n-th track of a kind.
struct StoredTrack {
  std::vector<StoredPacket> packets;
  std::string codec;
  std::string tag;
  int ticksPerSecond = 0;
  std::int64_t end = 0;  ///< of the last packet as the file's index tells it, in ticks
  int rate = 0;
  int channels = 0;
  std::int64_t bitRate = 0;
  bool isLowComplexity = false;
  bool isEnabled = false;
  bool saysBt709 = false;

  [[nodiscard]] std::vector<std::string> payloads() const;
};

[[nodiscard]] StoredTrack storedPicture(const std::filesystem::path& file);
[[nodiscard]] StoredTrack storedSound(const std::filesystem::path& file, int track = 0);
[[nodiscard]] int soundTrackCount(const std::filesystem::path& file);

}  // namespace vesk::media
