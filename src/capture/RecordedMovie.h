#pragma once

#include <expected>
#include <filesystem>
#include <memory>

#include "capture/TakeMovie.h"

namespace vesk::capture {

/// Opens a movie that is encoded on a thread of its own.
std::expected<std::unique_ptr<TakeMovie>, media::MediaError> openRecordedMovie(
    const std::filesystem::path& file, const media::CaptureSettings& settings);

}  // namespace vesk::capture
