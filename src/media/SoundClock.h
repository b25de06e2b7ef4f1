#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "media/HostTime.h"
#include "media/LibavHandles.h"

namespace vesk::media {

/// Samples as a source of sound delivers them, soundRate of them a second by its own clock.
struct SoundBlock {
  HostTime stamp{};  ///< of the first sample
  /// The source's own count of samples up to the first one, where it keeps one. It tells of lost
  /// samples exactly, where stamps tremble.
  std::optional<std::int64_t> position;
  std::span<const float> samples;  ///< ±1 is full scale; those of one instant side by side
};

/// Makes one stream without gaps, soundRate samples a second of the host's clock, out of a source
/// that runs by its own clock. What the source leaves out becomes silence of that length, and what
/// it delivers twice is cut. A source that is up to 500 ppm fast or slow is followed by resampling,
/// so slowly that trembling stamps do not show: as a phase-locked loop of second order (F.
/// Adriaensen, "Using a DLL to filter time", 2005), critically damped.
class SoundClock {
 public:
  /// Gets the stream's samples in order, piece by piece.
  using Sink = std::function<void(std::span<const float>)>;

  /// @param zero when the stream begins. What comes before is cut.
  SoundClock(int channels, HostTime zero, Sink sink);

  /// Takes in the next block.
  void push(const SoundBlock& block);
  /// Puts silence in where the source has delivered nothing until `time`.
  void fillUntil(HostTime time);
  /// Hands out what is still held back, less than a millisecond.
  void finish();

  /// Where the next sample of the source would come to stand.
  [[nodiscard]] HostTime end() const;
  /// How much slower than the host's clock the source is taken to run at present, in millionths.
  [[nodiscard]] double correction() const { return correction_; }

 private:
  [[nodiscard]] double lag(HostTime time) const;
  [[nodiscard]] std::int64_t missingBefore(const SoundBlock& block, double lag) const;
  void follow(double lag, double seconds);
  void convert(const float* samples, std::int64_t count);
  void putSilence(std::int64_t count);

  int channels_;
  HostTime zero_;
  Sink sink_;
  ResamplerPtr resampler_;
  std::int64_t given_ = 0;  ///< samples of the stream that went to the sink
  std::optional<std::int64_t> nextPosition_;
  bool hasStarted_ = false;
  // Of the loop: how late the source is, smoothed, in seconds; and rates, in millionths.
  double smoothedLag_ = 0;
  double drift_ = 0;
  double correction_ = 0;
};

}  // namespace vesk::media
