#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "media/StereoSample.h"

struct AVStream;

namespace vesk::media {

/// A place in a run, which is made of frames that follow on one another. The run tells where it
/// stands better than the stamps in its middle, which some writers round.
struct SoundPlace {
  std::int64_t runStart = 0;  ///< samples at soundRate, from time 0 of the file
  std::int64_t taken = 0;     ///< from there on, samples at the track's own rate

  [[nodiscard]] std::int64_t position(int rate) const;  ///< samples at soundRate
  /// Whether a frame that is stamped with this position follows on.
  [[nodiscard]] bool goesOnAt(std::int64_t stamped, int rate) const;
};

/// Where the frames of a sound track stand for someone who reads it from its beginning, as far as
/// the file's index tells.
class SoundTrackIndex {
 public:
  /// @param track outlives the index.
  /// @param firstStamp of the first frame that the decoder gives, in the track's ticks.
  /// @param firstLength its samples.
  SoundTrackIndex(AVStream& track, std::int64_t firstStamp, int firstLength);

  /// The stamp at `position`, in samples at soundRate; nothing where the first frame is not over.
  [[nodiscard]] std::optional<std::int64_t> stampAt(std::int64_t position) const;

  /// The place of the frame of the packet with this stamp; nothing for one that the index lacks.
  [[nodiscard]] std::optional<SoundPlace> placeOf(std::int64_t stamp);

 private:
  void findPlaces();
  [[nodiscard]] std::int64_t lengthOf(int entry) const;
  [[nodiscard]] std::int64_t positionOf(std::int64_t stamp) const;

  AVStream* track_;
  std::int64_t firstStamp_;
  int firstLength_;
  int firstEntry_ = -1;  ///< that of the first frame
  int entryCount_ = 0;   ///< for which the places were found; the index of a torn file grows
  std::vector<SoundPlace> places_;  ///< of the entries behind the first
};

}  // namespace vesk::media
