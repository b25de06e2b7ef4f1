#pragma once

#include <functional>
#include <span>

#include "media/HostTime.h"
#include "media/StereoSample.h"

namespace vesk::editor {

/// Where sound is heard, and the clock that comes with it. Sound has media::soundRate samples a
/// second. To be used by one thread, the user interface's.
class SoundOutput {
 public:
  /// Gives the samples that follow on those before. Called on a thread of the output's own, which
  /// must not be made to wait.
  using Fill = std::function<void(std::span<media::StereoSample>)>;

  SoundOutput() = default;
  SoundOutput(const SoundOutput&) = delete;
  SoundOutput& operator=(const SoundOutput&) = delete;
  virtual ~SoundOutput() = default;

  /// Starts to ask for samples. One run at a time.
  virtual void start(Fill fill) = 0;

  /// Ends the run: when it returns, `fill` is not called any more. Does nothing without a run.
  virtual void stop() = 0;

  /// The sound of this run that has been heard at `now`, in seconds. Below 0, and rising, while
  /// its first sample is on its way; steady afterwards, as the listener hears it. Where there is no
  /// device, or it went away, time goes by on the host's clock. Without a run 0.
  [[nodiscard]] virtual double heard(media::HostTime now) const = 0;

  /// Whether a device is there to be heard.
  [[nodiscard]] virtual bool isAudible() const = 0;
};

}  // namespace vesk::editor
