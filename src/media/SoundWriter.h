#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>

#include "media/LibavHandles.h"
#include "media/MediaError.h"
#include "media/MovieOutput.h"
#include "media/StereoSample.h"

struct AVStream;

namespace vesk::media {

/// Encodes stereo at soundRate as AAC (low complexity) at 192 kbit/s into an MPEG-4 file without a
/// picture. Unless it is finished, the file is removed again. To be used by one thread at a time.
class SoundWriter {
 public:
  /// Creates the file, which must not be there yet.
  [[nodiscard]] static std::expected<SoundWriter, MediaError> create(
      const std::filesystem::path& file);

  /// Appends samples; what exceeds full scale is up to the encoder.
  [[nodiscard]] std::expected<void, MediaError> write(std::span<const StereoSample> samples);

  /// Completes the file. Nothing may be written afterwards.
  [[nodiscard]] std::expected<void, MediaError> finish();

 private:
  using Outcome = std::expected<void, MediaError>;

  SoundWriter(std::filesystem::path file, MovieOutput output, CodecPtr encoder);
  Outcome start();
  int clearFrame();
  Outcome encodeFrame();
  Outcome encode(const AVFrame* frame);
  [[nodiscard]] std::unexpected<MediaError> encoderFailed(int code) const;

  std::filesystem::path file_;
  MovieOutput output_;
  CodecPtr encoder_;
  const AVStream* track_ = nullptr;
  FramePtr frame_;
  PacketPtr packet_;
  int filled_ = 0;             ///< samples in the frame
  std::int64_t position_ = 0;  ///< of the frame's first sample
};

}  // namespace vesk::media
