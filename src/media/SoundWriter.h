#pragma once

#include <expected>
#include <filesystem>
#include <span>
#include <vector>

#include "media/LibavHandles.h"
#include "media/MediaError.h"
#include "media/MovieOutput.h"
#include "media/SoundEncoder.h"
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

  SoundWriter(std::filesystem::path file, MovieOutput output, SoundEncoder encoder);
  Outcome start();
  Outcome store(int status);
  [[nodiscard]] std::unexpected<MediaError> encoderFailed(int code) const;

  std::filesystem::path file_;
  MovieOutput output_;
  SoundEncoder encoder_;
  const AVStream* track_ = nullptr;
  std::vector<PacketPtr> ready_;
};

}  // namespace vesk::media
