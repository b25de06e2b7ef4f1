#pragma once

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

#include "media/CaptureEncoder.h"
#include "package/PackageError.h"

namespace vesk::media {

/// All that decides how fast pictures of these settings are encoded here: size and rate, the
/// processor, the graphics devices and libav's version.
[[nodiscard]] std::string encodingSituation(const PictureTrackSettings& settings);

/// The name of the encoder that was chosen in a situation; empty where the file does not tell.
[[nodiscard]] std::string rememberedEncoder(const std::filesystem::path& memory,
                                            std::string_view situation);

/// Adds to the file, which may be missing, as may its folder; what cannot be read is replaced.
[[nodiscard]] std::expected<void, package::PackageError> rememberEncoder(
    const std::filesystem::path& memory, std::string_view situation, std::string_view encoder);

}  // namespace vesk::media
