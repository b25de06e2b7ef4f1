#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>
#include <vector>

#include "media/LibavHandles.h"
#include "media/MediaError.h"
#include "media/StereoResampler.h"
#include "media/StereoSample.h"

struct AVStream;

namespace vesk::media {

/// Decodes the first sound track of a file as stereo at soundRate, to the sample on the file's time
/// line: what an edit list or the encoder's start-up hides is left out, and where the stamps leave
/// a gap there is silence. Sound that lies over what has been there already is dropped. To be used
/// by one thread at a time.
class SoundReader {
 public:
  [[nodiscard]] static std::expected<SoundReader, MediaError> open(
      const std::filesystem::path& file);

  /// Fills `out` with the samples that follow on the ones before, from time 0 on. Where the track
  /// is damaged, and behind its end, there is silence.
  void read(std::span<StereoSample> out);

 private:
  SoundReader(InputPtr input, AVStream* track, CodecPtr decoder);

  bool fetch();
  bool decodeFrame();
  bool feedDecoder();
  [[nodiscard]] bool isPlausible() const;
  void startRun();
  void takeFrame();
  [[nodiscard]] bool frameContinuesRun() const;
  [[nodiscard]] std::int64_t framePosition() const;
  [[nodiscard]] std::int64_t runEnd() const;
  [[nodiscard]] std::int64_t chunkEnd() const;

  InputPtr input_;
  AVStream* track_;
  CodecPtr decoder_;
  PacketPtr packet_;
  FramePtr frame_;
  bool frameWaits_ = false;
  StereoResampler resampler_;

  // Frames that follow on one another make a run. Positions count samples at soundRate from 0.
  std::int64_t runStart_ = 0;
  std::int64_t runTaken_ = 0;        ///< samples at the track's own rate
  std::vector<StereoSample> chunk_;  ///< what was decoded last
  std::int64_t chunkStart_ = 0;
  std::int64_t position_ = 0;  ///< of the next sample to be read
};

}  // namespace vesk::media
