#pragma once

#include <optional>
#include <vector>

#include "capture/camera/CameraFormat.h"

struct spa_pod;
struct spa_pod_builder;

namespace vesk::capture::pipewire {

/// The formats in one of a node's descriptions of what it offers, as far as they can be read here.
/// Of a range of sizes, the one closest to what is wanted.
[[nodiscard]] std::vector<camera::CameraFormat> formatsOffered(const spa_pod& description,
                                                               PixelSize wanted);

/// A description of the one format that a stream takes. It lies in the builder's memory.
[[nodiscard]] const spa_pod* describe(const camera::CameraFormat& format, spa_pod_builder& builder);

/// The format that was agreed on; nothing when it cannot be read here.
[[nodiscard]] std::optional<camera::CameraFormat> formatAgreed(const spa_pod& description);

}  // namespace vesk::capture::pipewire
