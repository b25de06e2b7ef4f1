#pragma once

#include <filesystem>

namespace vesk::bench {

/// Writes a recording of an hour into a folder: 432,000 moves of the mouse, 2,000 clicks, 300
/// segments, a picture each second of 1280×720, a tone. Takes about a minute. Gives the package;
/// throws when the ffmpeg program is missing.
std::filesystem::path makeHourLongTake(const std::filesystem::path& folder);

/// Writes a recording that flashes white and beeps for 0.1 s every two seconds, at once, in step
/// with its own clock.
std::filesystem::path makeFlashingTake(const std::filesystem::path& folder, double seconds);

}  // namespace vesk::bench
