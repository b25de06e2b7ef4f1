#pragma once

#include <expected>
#include <memory>
#include <string>

#include "editor/OutputRun.h"
#include "editor/SoundOutput.h"
#include "editor/pipewire/PlaybackStream.h"

namespace vesk::editor::pipewire {

/// The computer's default output device, over PipeWire. It follows a change of that device, and a
/// server that was started anew is found at the next run.
class PipeWireSoundOutput final : public SoundOutput {
 public:
  /// @param remote the path of the server's socket, or its name; empty for that of the environment.
  [[nodiscard]] static std::expected<std::unique_ptr<SoundOutput>, std::string> open(
      const std::string& remote = {});

  ~PipeWireSoundOutput() override;

  void start(Fill fill) override;
  void stop() override;
  double heard(media::HostTime now) const override;
  bool isAudible() const override;

 private:
  explicit PipeWireSoundOutput(std::string remote);
  void connect();

  std::string remote_;
  OutputRun run_;
  std::unique_ptr<PlaybackStream> stream_;  ///< null while no server is there
};

}  // namespace vesk::editor::pipewire
