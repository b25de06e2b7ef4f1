#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "package/Picture.h"

namespace vesk::media {

/// Decodes a JFIF file in BT.601, full range. Nothing comes of anything else, of a damaged or cut
/// one, and of one of more than 4096 × 4096 pixels, which is refused by its header.
[[nodiscard]] std::optional<package::Picture> decodeJpeg(std::string_view file);

/// Encodes a JFIF file, the same bytes for the same picture.
/// @param quality 0…1, where 0.5 takes the standard quantisation as it is and 1 the finest.
[[nodiscard]] std::optional<std::string> encodeJpeg(const package::Picture& picture,
                                                    double quality);

}  // namespace vesk::media
