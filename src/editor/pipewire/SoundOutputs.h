#pragma once

#include <memory>
#include <string>

#include "editor/SoundOutput.h"

namespace vesk::editor::pipewire {

/// The first output that can be opened, of those listed here in the order of preference: PipeWire's
/// default device, then none, where playback is silent. There is always one.
/// @param remote of PipeWire: the path of its socket, or its name; empty for the environment's.
[[nodiscard]] std::unique_ptr<SoundOutput> openSoundOutput(const std::string& remote = {});

}  // namespace vesk::editor::pipewire
