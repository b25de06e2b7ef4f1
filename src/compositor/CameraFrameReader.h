#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>

#include "media/MediaError.h"
#include "media/VideoFrame.h"

namespace vesk::compositor {

/// Pulls the pictures of "camera.mov" one by one, strictly forwards: a pass over the file costs one
/// decoding of it, done ahead on another thread. A file that cannot be read has no pictures; one
/// that breaks off keeps its last. To be used by one thread at a time.
class CameraFrameReader {
 public:
  /// Gives the next picture in order of presentation, nothing after the last one.
  using Next = std::function<std::expected<std::optional<media::VideoFrame>, media::MediaError>()>;

  explicit CameraFrameReader(const std::filesystem::path& file);
  explicit CameraFrameReader(Next next) : next_(std::move(next)) {}

  /// The first picture at or after `seconds` on the file's own clock, of those not yet passed;
  /// after the end the last one. Reads only when the picture at hand is too early.
  const std::optional<media::VideoFrame>& frame(double seconds);

 private:
  Next next_;  ///< empty when there is nothing more to read
  std::optional<media::VideoFrame> current_;
};

}  // namespace vesk::compositor
