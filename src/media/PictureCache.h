#pragma once

#include <cstddef>
#include <deque>

#include "media/VideoFrame.h"

namespace vesk::media {

/// Decoded pictures on both sides of a playhead, and for how long each is known to stand. Holds as
/// many as it may and lets those go first that lie far from the playhead.
class PictureCache {
 public:
  /// In pictures.
  struct Capacity {
    std::size_t total = 0;
    std::size_t after = 0;  ///< the playhead; those before it have the rest, less one
  };

  struct Entry {
    VideoFrame picture;
    double until = 0;  ///< when the next one takes its place; its own time while that is unknown

    /// How far `time` is from the time in which the picture is known to stand, in seconds.
    [[nodiscard]] double distanceTo(double time) const noexcept;
  };

  /// Pictures that follow each other without a gap, one of which stands at a given time.
  struct Run {
    std::size_t before = 0;  ///< the one that stands
    std::size_t after = 0;
    double begin = 0;  ///< when the first one comes
    double end = 0;    ///< when what follows the last one comes, infinite where nothing does
  };

  explicit PictureCache(Capacity capacity) noexcept : capacity_(capacity) {}

  /// A picture known already stays as it is.
  void add(VideoFrame picture);
  /// Notes when the picture of time `pts` ends, if it is here.
  void setEnd(double pts, double until);
  /// Lets pictures go for a playhead at `time` until the rest may stay.
  void trim(double time);

  /// The picture known to stand at `time`, or null. Good until the next change.
  [[nodiscard]] const Entry* standingAt(double time) const;
  /// The picture nearest to `time`; null without any. Good until the next change.
  [[nodiscard]] const Entry* nearestTo(double time) const;
  /// `time` must be one at which a picture stands.
  [[nodiscard]] Run runAround(double time) const;

 private:
  using Entries = std::deque<Entry>;
  [[nodiscard]] Entries::const_iterator firstAfter(double time) const;

  Capacity capacity_;
  Entries entries_;  ///< in order of time
};

}  // namespace vesk::media
