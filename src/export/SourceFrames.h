#pragma once

#include <expected>
#include <functional>
#include <optional>

#include "media/MediaError.h"
#include "media/VideoFrame.h"

namespace vesk::exporting {

/// Finds, for each output time, the recorded picture that stands then. The recording has a picture
/// only where the screen changed, the output a fixed grid. Times count from the first picture.
class SourceFrames {
 public:
  using Next = std::function<std::expected<std::optional<media::VideoFrame>, media::MediaError>()>;

  /// @param next gives the pictures in order of presentation.
  explicit SourceFrames(Next next);

  /// The last picture at or before `time` seconds; nothing when there is none. `time` must not
  /// fall from call to call.
  std::expected<std::optional<media::VideoFrame>, media::MediaError> at(double time);

 private:
  Next next_;
  bool started_ = false;
  double firstPTS_ = 0;
  std::optional<media::VideoFrame> pending_;  ///< read, but not yet due
  std::optional<media::VideoFrame> held_;     ///< stands now
};

}  // namespace vesk::exporting
