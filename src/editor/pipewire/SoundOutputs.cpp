#include "editor/pipewire/SoundOutputs.h"

#include <array>
#include <expected>
#include <string_view>
#include <utility>

#include "editor/SilentSoundOutput.h"
#include "editor/pipewire/PipeWireSoundOutput.h"
#include "media/HostTime.h"
#include "package/Log.h"

namespace vesk::editor::pipewire {
namespace {

using Opened = std::expected<std::unique_ptr<SoundOutput>, std::string>;

Opened openSilent(const std::string& /*remote*/) {
  return std::make_unique<SilentSoundOutput>(media::monotonicTime);
}

struct Backend {
  std::string_view name;
  Opened (*open)(const std::string& remote);
};

constexpr std::array backends{Backend{"PipeWire", &PipeWireSoundOutput::open},
                              Backend{"silence", &openSilent}};

}  // namespace

std::unique_ptr<SoundOutput> openSoundOutput(const std::string& remote) {
  spdlog::logger& log = package::log(package::LogCategory::preview);
  for (const Backend& backend : backends) {
    Opened output = backend.open(remote);
    if (output) {
      log.info("sound output: {}", backend.name);
      return *std::move(output);
    }
    log.error("no sound by {}: {}", backend.name, output.error());
  }
  std::unreachable();  // silence can always be opened
}

}  // namespace vesk::editor::pipewire
