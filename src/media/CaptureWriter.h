#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>

#include "media/CaptureEncoder.h"
#include "media/FragmentWriter.h"
#include "media/HostTime.h"
#include "media/I420Picture.h"
#include "media/MediaError.h"
#include "media/SoundClock.h"
#include "media/SoundEncoder.h"

namespace vesk::media {

/// A file of a take: pictures, sound, or both.
struct CaptureSettings {
  GrowingFile kind = GrowingFile::quickTime;
  std::optional<PictureTrackSettings> pictures;
  CaptureEncoder encoder = plainestCaptureEncoder();  ///< of the pictures
  std::optional<SoundTrackSettings> sound;
};

/// Writes a movie while a take runs. The first picture (in a file of sound alone, the first sound)
/// is the movie's time zero; every stamp is kept to a 120,000th of a second, and sound is made to
/// run by the host's clock. A key frame comes every two seconds, and with it the part before it is
/// written for good: that much can be played whatever becomes of the process. finish() makes the
/// file one with an index. To be used by one thread at a time.
///
/// After a failure nothing more can be written; the file keeps what was written for good.
class CaptureWriter {
 public:
  using Outcome = std::expected<void, MediaError>;
  using Picture = std::shared_ptr<const I420Picture>;

  /// Creates the file, in the place of one that is there.
  [[nodiscard]] static std::expected<CaptureWriter, MediaError> create(
      const std::filesystem::path& file, const CaptureSettings& settings);

  CaptureWriter(const CaptureWriter&) = delete;
  CaptureWriter(CaptureWriter&&) noexcept;
  CaptureWriter& operator=(const CaptureWriter&) = delete;
  CaptureWriter& operator=(CaptureWriter&&) noexcept;
  ~CaptureWriter();

  /// Appends a picture of the settings' size. One that is not later than the one before, by a
  /// 120,000th of a second at least, is left out.
  [[nodiscard]] Outcome write(Picture picture, HostTime stamp);
  /// Appends the latest picture once more; without one, does nothing.
  [[nodiscard]] Outcome repeatLatest(HostTime stamp);
  /// Tells that no picture has come since the latest. When that one has stood for eight seconds it
  /// is appended once more, so that what stands is written for good as well.
  [[nodiscard]] Outcome stillAt(HostTime now);
  /// Appends sound. Where the file has pictures, what is before the first of them is left out.
  /// Sound that comes more than a second later than the pictures is taken for missing.
  [[nodiscard]] Outcome write(const SoundBlock& sound);

  /// Completes the movie. A file into which nothing came is removed. Nothing may be written
  /// afterwards. Where only the last step fails, the movie can be played all the same.
  [[nodiscard]] Outcome finish();

 private:
  class Recording;
  explicit CaptureWriter(std::unique_ptr<Recording> recording);
  std::unique_ptr<Recording> recording_;
};

}  // namespace vesk::media
