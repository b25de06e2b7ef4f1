#pragma once

#include "motion/DumpCtx.h"
#include "motion/Peak.h"

namespace vesk::motion {

/// How the camera keeps the cursor in view while it holds a framing. An axis on which the box shows
/// the whole picture, or next to nothing of it, does not count.
struct HoldMeasure {
  int frames = 0;           ///< frames measured
  int outsideDeadzone = 0;  ///< of those, with the cursor where the camera has to move
  int takeoverFrames = 0;   ///< cursor out of view while the following takes over
  int lostFrames = 0;       ///< cursor out of view afterwards
  Peak lost;                ///< the lost frame that is farthest off centre
  Peak offCentre;           ///< over all frames, in shares of the box; 0.5 is its edge
};

/// Walks the holds of all segments that follow the cursor, pans included.
HoldMeasure measureHolds(const DumpCtx& context);

}  // namespace vesk::motion
