#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "media/MediaError.h"
#include "media/VideoFrame.h"
#include "media/VideoReader.h"

namespace vesk::media {

/// The pictures of a movie for a playhead that moves on and jumps about: decoded on a thread of
/// its own ahead of the playhead, asked for by time. Times are seconds on the file's own time line.
/// All calls from one thread, and none of them waits for the decoder but the one that says so.
class PictureFeed {
 public:
  /// Told, on the feed's thread, that pictureAt() may now give another picture for a time that was
  /// asked for or sought. Must not call back into the feed.
  using Arrival = std::function<void()>;

  /// Opens the movie and seeks its beginning.
  [[nodiscard]] static std::expected<std::unique_ptr<PictureFeed>, MediaError> open(
      const std::filesystem::path& file, Arrival arrival = {});

  PictureFeed(const PictureFeed&) = delete;
  PictureFeed& operator=(const PictureFeed&) = delete;
  ~PictureFeed();

  [[nodiscard]] const VideoInfo& info() const noexcept;

  /// The time of the movie's first picture; 0 for one without.
  [[nodiscard]] double firstPTS() const noexcept;

  /// Moves the playhead. Of several requests the newest wins; while requests come faster than they
  /// can be met, pictures on the way stand in.
  void seek(double time);

  /// The picture that stands at `time`, the last one at or before it, as far as the decoder has
  /// come; after a seek, until its picture is there, the best one so far. Nothing before the first
  /// picture of the movie has been decoded. `time` also leads the decoder on while it plays.
  [[nodiscard]] std::optional<VideoFrame> pictureAt(double time);

  /// Whether what pictureAt(time) gives is exact: it will not be replaced by a better one.
  [[nodiscard]] bool isExactAt(double time) const;

  /// Waits for the exact picture at `time`. A movie that cannot be read that far gives the last one
  /// before it.
  [[nodiscard]] std::optional<VideoFrame> waitForPictureAt(double time);

  /// How many pictures have been decoded so far, for whatever end.
  [[nodiscard]] std::int64_t decodedPictures() const;

 private:
  class Worker;
  explicit PictureFeed(std::unique_ptr<Worker> worker);

  std::unique_ptr<Worker> worker_;
};

}  // namespace vesk::media
