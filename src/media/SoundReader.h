#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "media/LibavHandles.h"
#include "media/MediaError.h"
#include "media/SoundTrackIndex.h"
#include "media/StereoResampler.h"
#include "media/StereoSample.h"

struct AVStream;

namespace vesk::media {

/// Decodes the first sound track of a file as stereo at soundRate, to the sample on the file's time
/// line: what an edit list or the encoder's start-up hides is left out, and where the stamps leave
/// a gap there is silence, and so are samples that are no numbers or absurdly loud. Sound that lies
/// over what has been there already is dropped. To be used by one thread at a time.
class SoundReader {
 public:
  [[nodiscard]] static std::expected<SoundReader, MediaError> open(
      const std::filesystem::path& file);

  /// Fills `out` with the samples that follow on the ones before, from time 0 on. Where the track
  /// is damaged, and behind its end, there is silence.
  void read(std::span<StereoSample> out);

  /// The number of samples from time 0 to the one that is read next.
  [[nodiscard]] std::int64_t position() const noexcept { return position_; }

  /// Makes the sample at this number, at least 0, the next to be read. What is read then is, to the
  /// bit, what reading up to there would have led to, but for noise that the decoder makes up where
  /// AAC tells it to. Fast, since only a moment before is decoded; in a file that tells of no
  /// packets in advance the demuxer has to pass over what lies between.
  void seek(std::int64_t position);

 private:
  static constexpr std::int64_t beginning = std::numeric_limits<std::int64_t>::min();

  SoundReader(InputPtr input, AVStream* track, CodecPtr decoder);

  bool fetch();
  bool decodeFrame();
  bool feedDecoder();
  [[nodiscard]] bool isTooEarly() const;
  [[nodiscard]] bool isPlausible() const;
  void startRun();
  void resumeRun();
  void takeFrame();
  void learnStart();
  void moveTo(std::int64_t stamp);
  void restartDecoder();
  [[nodiscard]] bool frameContinuesRun() const;
  [[nodiscard]] std::int64_t framePosition() const;
  [[nodiscard]] std::int64_t chunkEnd() const;

  InputPtr input_;
  AVStream* track_;
  CodecPtr decoder_;
  PacketPtr packet_;
  FramePtr frame_;
  bool frameWaits_ = false;
  StereoResampler resampler_;
  std::optional<SoundTrackIndex> index_;  ///< once the first frame is known
  std::int64_t firstStamp_ = beginning;   ///< what ends before is left out
  bool isResuming_ = false;               ///< after a seek, until a frame has come

  // Positions count samples at soundRate from 0.
  SoundPlace run_;                   ///< where the next frame is expected
  std::vector<StereoSample> chunk_;  ///< what was decoded last
  std::int64_t chunkStart_ = 0;
  std::int64_t position_ = 0;  ///< of the next sample to be read
};

}  // namespace vesk::media
