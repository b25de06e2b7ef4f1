#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace vesk::motion {

/// The transition curves of zooms and pans; the user picks one for a whole recording.
enum class CameraEase { smooth, snappy, cinema, springy, linear };

inline constexpr std::array allCameraEases{CameraEase::smooth, CameraEase::snappy,
                                           CameraEase::cinema, CameraEase::springy,
                                           CameraEase::linear};

/// Stored form and label at once.
std::string_view rawValue(CameraEase ease);
std::optional<CameraEase> cameraEase(std::string_view raw);
/// One line on the curve's character.
std::string_view helpLine(CameraEase ease);

/// Progress of the curve at t (clamped to 0…1): 0 at 0 and 1 at 1; only `springy` exceeds 1 on the
/// way. The four others are cubic Béziers with end points (0, 0) and (1, 1), solved for x by
/// Newton's method; `springy` is Penner's back-out polynomial.
double value(CameraEase ease, double t);

}  // namespace vesk::motion
