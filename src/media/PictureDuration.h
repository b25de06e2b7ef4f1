#pragma once

#include <filesystem>
#include <optional>

namespace vesk::media {

/// How long the first video track of a movie lasts, in seconds and to the frame; a movie as a whole
/// counts in coarser units. Nothing for a file that cannot be read, or has no such track.
[[nodiscard]] std::optional<double> pictureDuration(const std::filesystem::path& file);

}  // namespace vesk::media
