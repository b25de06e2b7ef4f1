#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "media/CaptureWriter.h"
#include "media/HostTime.h"
#include "media/I420Picture.h"
#include "media/SoundClock.h"

namespace vesk::media {

inline constexpr int takeWidth = 160;
inline constexpr int takeHeight = 90;

/// When the takes of these tests begin; the clock of the host has run for long.
inline constexpr HostTime takeStart = std::chrono::hours(100);

[[nodiscard]] inline HostTime takeTime(double seconds) {
  return takeStart + HostTime(std::llround(seconds * 1e9));
}

/// A small take of pictures, in 30 pictures a second, and perhaps of sound.
[[nodiscard]] CaptureSettings takeSettings(std::string_view encoder = "libx264-ultrafast",
                                           int soundChannels = 0);

/// Flat, of the shade shadeOf(index).
[[nodiscard]] std::shared_ptr<const I420Picture> flatPicture(int index, int width = takeWidth,
                                                             int height = takeHeight);
/// So rough that it takes many bytes.
[[nodiscard]] std::shared_ptr<const I420Picture> roughPicture(int index, int width = takeWidth,
                                                              int height = takeHeight);

/// Something that delivers sound in blocks of 20 ms. Its wave is a function of the time on the
/// host's clock, in seconds since takeStart.
class TestSoundSource {
 public:
  using Wave = std::function<float(double)>;

  explicit TestSoundSource(int channels, Wave wave = {}, double partsPerMillionFast = 0);

  /// The next block; good until the next call.
  [[nodiscard]] SoundBlock next();
  /// Leaves out the samples of that many blocks; its count of samples goes on.
  void lose(int blocks) { position_ += std::int64_t{blocks} * blockLength; }
  /// Of the next block, in seconds since takeStart.
  [[nodiscard]] double time() const { return static_cast<double>(position_) / rate_; }

  static constexpr int blockLength = 960;

 private:
  int channels_;
  Wave wave_;
  double rate_;  ///< samples a second, by the host's clock
  std::int64_t position_ = 0;
  std::vector<float> samples_;
};

/// A sine of 1 kHz from `start` on for 0.1 s.
[[nodiscard]] TestSoundSource::Wave beepAt(double start);

}  // namespace vesk::media
