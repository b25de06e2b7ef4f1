#pragma once

struct AVStream;

namespace vesk::media {

/// How stored pictures are to be turned before they are shown.
struct DisplayOrientation {
  bool isMirrored = false;  ///< left and right are swapped first
  int quarterTurns = 0;     ///< clockwise, 0…3
  bool operator==(const DisplayOrientation&) const = default;
};

/// What the display matrix of a track asks for (ISO/IEC 14496-12, section 8.3.2), its angle rounded
/// to quarter turns.
[[nodiscard]] DisplayOrientation displayOrientationOf(const AVStream& track);

}  // namespace vesk::media
