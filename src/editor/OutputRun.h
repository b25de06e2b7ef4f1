#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>

#include "editor/HeardClock.h"
#include "editor/SoundOutput.h"
#include "media/HostTime.h"
#include "media/StereoSample.h"

namespace vesk::editor {

/// The run of an output to a device, between the user interface's thread, which starts and stops
/// it, and the device's, which takes samples and is never made to wait. Where the device stood
/// still and the clock went on, samples are left out, so that sound and clock meet again.
class OutputRun {
 public:
  /// One run at a time. @param now on the host's clock, as in all that follows.
  void start(SoundOutput::Fill fill, media::HostTime now);
  /// Waits for a callback that runs; after that none comes.
  void stop();

  /// As SoundOutput has it.
  [[nodiscard]] double heard(media::HostTime now) const;

  /// Fills `out`, of which the first sample is heard at `heardAt`; silence without a run. On the
  /// device's thread.
  void take(std::span<media::StereoSample> out, media::HostTime now, media::HostTime heardAt);

 private:
  [[nodiscard]] std::int64_t missed(media::HostTime now, media::HostTime heardAt);
  void leaveOut(std::int64_t count);

  std::mutex fillMutex_;  ///< held while samples are taken; guards what follows
  SoundOutput::Fill fill_;
  std::int64_t given_ = 0;  ///< samples, those that were left out among them

  mutable std::mutex clockMutex_;  ///< held for a moment only
  std::optional<HeardClock> clock_;
};

}  // namespace vesk::editor
