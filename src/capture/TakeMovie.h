#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "media/CaptureWriter.h"
#include "media/HostTime.h"
#include "media/MediaError.h"
#include "media/SoundClock.h"

namespace vesk::capture {

/// A movie file that is written while a take runs. Those who offer never wait for the encoder. To
/// be used by one thread at a time.
class TakeMovie {
 public:
  using Picture = media::CaptureWriter::Picture;

  virtual ~TakeMovie() = default;

  /// False when there is no room for the picture now; it is then gone.
  virtual bool offer(Picture picture, media::HostTime stamp) = 0;
  virtual bool offer(const media::SoundBlock& sound) = 0;
  /// Tells that there is nothing new to be seen up to now, so that what is written for good keeps
  /// up with a screen that stands still.
  virtual void stillAt(media::HostTime now) = 0;
  /// Appends the latest picture once more.
  virtual void repeatLatest(media::HostTime stamp) = 0;

  /// Why nothing more can be written, a phrase for the user without its full stop. What has been
  /// written stays.
  virtual std::optional<std::string> failure() const = 0;

  /// Writes what was offered and completes the file; a file into which nothing came is removed.
  /// Nothing may be offered afterwards. The error is a phrase like that of failure().
  virtual std::expected<void, std::string> finish() = 0;
};

/// Creates a file in the place of one that is there.
using OpenTakeMovie = std::function<std::expected<std::unique_ptr<TakeMovie>, media::MediaError>(
    const std::filesystem::path& file, const media::CaptureSettings& settings)>;

}  // namespace vesk::capture
