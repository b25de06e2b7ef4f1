#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>

#include "media/DisplayOrientation.h"
#include "media/MediaError.h"
#include "media/VideoFrame.h"

namespace vesk::media {

/// What a movie says of its first video track.
struct VideoInfo {
  int width = 0;
  int height = 0;
  double frameRate = 0;  ///< mean frames per second, 0 when unknown
  double duration = 0;   ///< of the movie in seconds, 0 when unknown
  /// The file ends inside one of its own boxes: it was cut, or its writer died. What is there can
  /// still be read; after its last picture next() fails.
  bool truncated = false;
  DisplayOrientation orientation;  ///< not applied to the pictures of next()
  bool operator==(const VideoInfo&) const = default;
};

/// Decodes the first video track of a QuickTime or MP4 file (fragmented ones included) from its
/// first picture, or one that was sought, to its last. Reads that one local file and nothing that
/// it refers to. To be used by one thread at a time.
class VideoReader {
 public:
  /// `threads` that decode, 0 for one per processor.
  [[nodiscard]] static std::expected<VideoReader, MediaError> open(
      const std::filesystem::path& file, int threads = 0);

  VideoReader(const VideoReader&) = delete;
  VideoReader(VideoReader&&) noexcept;
  VideoReader& operator=(const VideoReader&) = delete;
  VideoReader& operator=(VideoReader&&) noexcept;
  ~VideoReader();

  [[nodiscard]] const VideoInfo& info() const noexcept;

  /// The next picture in order of presentation, at the size of info(); nothing after the last one.
  /// `pts` never decreases but by a seek. Damaged pictures in between are left out. A file that
  /// ends early or cannot be read on fails after the last picture that could be decoded, as does
  /// one of whose pictures none could be; end and failure repeat when asked again.
  [[nodiscard]] std::expected<std::optional<VideoFrame>, MediaError> next();

  /// Moves on, or back, to the last picture at or before `time` (seconds on the file's time line, 0
  /// for NaN): next() gives it and then those that follow, the same pictures as without a seek.
  /// Before the first picture that is the first one; after the last readable one, the last. Decodes
  /// from the key frame before. Fails where the file cannot be read at another place.
  [[nodiscard]] std::expected<void, MediaError> seek(double time);

  /// The same, but next() begins with the key frame, or the first readable picture after it: one
  /// that is not after `time`, unless the movie has none.
  [[nodiscard]] std::expected<void, MediaError> seekKeyFrame(double time);

  /// When the last key frame at or before `time` is shown, as far as the movie's index tells: with
  /// pictures stored out of order that can be too early until the key frame has been read once.
  [[nodiscard]] double keyFrameBefore(double time) const;

  /// Makes a next() or seek that runs on another thread fail soon, and all later ones.
  void interrupt() noexcept;

 private:
  class Decoding;
  explicit VideoReader(std::unique_ptr<Decoding> decoding);
  std::unique_ptr<Decoding> decoding_;
};

}  // namespace vesk::media
