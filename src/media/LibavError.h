#pragma once

#include <filesystem>

#include "media/MediaError.h"

namespace vesk::media {

/// The error for a libav code (negative) met while reading `file`; `kind` where the code says
/// nothing more precise.
[[nodiscard]] MediaError readingError(MediaError::Kind kind, int code,
                                      const std::filesystem::path& file);

/// The same while writing `file`. Looks at the folder to tell a missing one from a closed one.
[[nodiscard]] MediaError writingError(MediaError::Kind kind, int code,
                                      const std::filesystem::path& file);

/// The error for a movie without moving pictures.
[[nodiscard]] MediaError noVideoTrackError(const std::filesystem::path& file);

}  // namespace vesk::media
