#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "capture/BackendError.h"
#include "capture/Listening.h"
#include "media/SoundClock.h"

namespace vesk::capture {

/// Sound that can be recorded: a microphone, or what the computer plays.
class SoundSource {
 public:
  using OnBlock = std::function<void(const media::SoundBlock&)>;
  using OnEnd = std::function<void(const BackendError&)>;

  virtual ~SoundSource() = default;

  /// Of every block; the samples of one instant lie side by side.
  virtual int channels() const = 0;

  /// What the user calls the device that would be heard now; nothing when there is none.
  virtual std::optional<std::string> deviceName() = 0;

  /// Calls back on a thread of the source's own with blocks in the order of their time, 48,000
  /// samples a second and channel. What the device loses shows in the blocks' positions and stamps.
  /// `onEnd` is called once, when no further sound will come although nobody ended the stream.
  virtual std::expected<std::unique_ptr<Listening>, BackendError> listen(OnBlock onBlock,
                                                                         OnEnd onEnd) = 0;
};

}  // namespace vesk::capture
