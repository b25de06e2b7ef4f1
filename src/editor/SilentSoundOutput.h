#pragma once

#include <functional>
#include <optional>

#include "editor/SoundOutput.h"

namespace vesk::editor {

/// No device: the clock alone. It asks for no samples, as nobody would hear them.
class SilentSoundOutput final : public SoundOutput {
 public:
  /// @param hostTime tells the time on the host's clock.
  explicit SilentSoundOutput(std::function<media::HostTime()> hostTime);

  void start(Fill fill) override;
  void stop() override;
  double heard(media::HostTime now) const override;
  bool isAudible() const override;

 private:
  std::function<media::HostTime()> hostTime_;
  std::optional<media::HostTime> start_;
};

}  // namespace vesk::editor
