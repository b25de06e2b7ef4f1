#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <memory>

#include "media/I420Picture.h"
#include "media/MediaError.h"
#include "media/VideoSettings.h"

namespace vesk::media {

/// Encodes pictures into a movie file with the index at its front, so that it plays while it is
/// still being fetched. A key frame comes at least every two seconds. The same pictures give the
/// same bytes each time (with the same settings, libraries and processor). To be used by one thread
/// at a time.
///
/// The file is complete only after finish(). Whenever anything fails, and in the destructor of an
/// unfinished writer, the partial file is removed.
class VideoWriter {
 public:
  /// Creates the file, replacing a regular file of that name.
  [[nodiscard]] static std::expected<VideoWriter, MediaError> open(
      const std::filesystem::path& file, const VideoSettings& settings);

  VideoWriter(const VideoWriter&) = delete;
  VideoWriter(VideoWriter&&) noexcept;
  VideoWriter& operator=(const VideoWriter&) = delete;
  VideoWriter& operator=(VideoWriter&&) noexcept;
  ~VideoWriter();

  /// Appends a picture of the settings' size, to be shown at frameIndex / fps seconds. The index
  /// must rise from call to call. The picture has been taken in when this returns: it may be
  /// changed, or written again, at once. Waits while the encoder is busy.
  [[nodiscard]] std::expected<void, MediaError> write(const I420Picture& picture,
                                                      std::int64_t frameIndex);

  /// Completes the movie and closes the file. Nothing may be written afterwards.
  [[nodiscard]] std::expected<void, MediaError> finish();

  /// Gives up and removes the partial file. Does nothing after finish().
  void cancel() noexcept;

 private:
  class Encoding;
  explicit VideoWriter(std::unique_ptr<Encoding> encoding);
  std::unique_ptr<Encoding> encoding_;
};

}  // namespace vesk::media
