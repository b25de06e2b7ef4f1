#pragma once

namespace vesk::editor::timeline {

// The measures of the timeline, in points.

inline constexpr double headWidth = 76;    ///< the lanes' heads at the left
inline constexpr double rulerH = 20;       ///< the ruler
inline constexpr double markerH = 26;      ///< the lane of marks
inline constexpr double videoH = 44;       ///< the lane of the picture
inline constexpr double zoomH = 34;        ///< the lane of the segments
inline constexpr double handleVisual = 5;  ///< a segment's trim handle as it is seen
inline constexpr double handleHit = 12;    ///< a segment's trim handle as it is hit

}  // namespace vesk::editor::timeline
