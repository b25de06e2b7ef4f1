#pragma once

#include <cstdint>

#include "media/CaptureEncoder.h"

namespace vesk::media {

/// How fast an encoder was on pictures that are hard to encode.
struct EncoderPace {
  bool works = false;  ///< it is there, and gave back each picture before it took the next
  int pictures = 0;    ///< that were measured
  double seconds = 0;  ///< that it took for them
  bool operator==(const EncoderPace&) const = default;
};

/// An encoder must be this much faster than the pictures come: the capture and what is captured
/// want time as well.
inline constexpr double paceMargin = 1.5;

enum class PaceVerdict : std::uint8_t {
  holds,
  fails,
  unsure,  ///< too little was measured
};

/// Whether an encoder keeps up with `fps` pictures a second. Sure after a second, or after as many
/// pictures as come in a second; earlier where the pace is off by a factor of two.
[[nodiscard]] PaceVerdict judge(const EncoderPace& pace, int fps);

/// Encodes pictures of scrolling text until the verdict is sure, for little more than a second at
/// most. The first does not count.
[[nodiscard]] EncoderPace measurePace(const CaptureEncoder& encoder,
                                      const PictureTrackSettings& settings);

}  // namespace vesk::media
