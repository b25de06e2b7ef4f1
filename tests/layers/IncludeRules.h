#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "layers/Include.h"

// What a source file may include. A file is named from the repository's root
// ("src/motion/CameraTrack.h"); a rule gives the reason of a breach, or nothing.
namespace vesk::layers {

/// A quoted include is written from src/, never relative to the file. The header that embeds a
/// layer's shaders is generated and has no directory.
std::optional<std::string> relativeIncludeBreach(std::string_view file, const Include& include);

/// An include points to the file's own layer or to one that it may build on.
std::optional<std::string> layerBreach(std::string_view file, const Include& include);

/// The header of a system library stays in the sources of the backend that wraps the library.
std::optional<std::string> backendBreach(std::string_view file, const Include& include);

}  // namespace vesk::layers
