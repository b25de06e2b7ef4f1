#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>

#include "capture/BackendError.h"
#include "capture/Listening.h"
#include "capture/SoundSource.h"
#include "capture/pipewire/CallbackGate.h"
#include "capture/pipewire/Registry.h"

namespace vesk::capture::pipewire {

/// Where a stream of sound comes from.
struct SoundStreamRequest {
  DefaultDevice device = DefaultDevice::source;  ///< of a sink, what is played to it
  int channels = 1;
  std::string remote;  ///< as Connection has it
};

/// The sound of a default device, whichever device that is at the time. It ends when there has been
/// none for a second.
class SoundStream final : public Listening {
 public:
  /// Refuses where there is no such device.
  [[nodiscard]] static std::expected<std::unique_ptr<Listening>, BackendError> open(
      const SoundStreamRequest& request, SoundSource::OnBlock onBlock, SoundSource::OnEnd onEnd);

  ~SoundStream() override;

 private:
  class Stream;
  class DeviceWatch;

  SoundStream(SoundStreamRequest request, SoundSource::OnBlock onBlock, SoundSource::OnEnd onEnd);
  std::expected<void, BackendError> start();
  void onRegistryChange();

  SoundStreamRequest request_;
  SoundSource::OnBlock onBlock_;
  CallbackGate gate_;
  std::unique_ptr<media::pipewire::Connection> connection_;
  std::unique_ptr<DeviceWatch> watch_;
  std::unique_ptr<Registry> registry_;
  std::unique_ptr<Stream> stream_;
};

/// What the user calls the default device; nothing when there is none.
[[nodiscard]] std::optional<std::string> defaultDeviceName(DefaultDevice device,
                                                           const std::string& remote);

}  // namespace vesk::capture::pipewire
