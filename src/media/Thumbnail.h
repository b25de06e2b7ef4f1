#pragma once

#include <filesystem>
#include <optional>

#include "package/Picture.h"

namespace vesk::media {

/// The small picture of a package: the one kept in "thumb.jpg", or else one made from "screen.mov"
/// half a second into it, at most 640 × 640, which is then kept there if the package can be written
/// to. Nothing when neither file gives a picture. What is wrong with either is no failure, and what
/// packageFile refuses is not opened. Blocks, and may be called on any thread.
[[nodiscard]] std::optional<package::Picture> thumbnail(const std::filesystem::path& package);

}  // namespace vesk::media
