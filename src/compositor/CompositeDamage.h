#pragma once

#include <vector>

#include "compositor/CompositePlan.h"
#include "gpu/PixelRect.h"

namespace vesk::compositor {

/// What differs between two composites.
struct CompositeDamage {
  bool isEverything = false;
  std::vector<gpu::PixelRect> rects;  ///< disjoint, inside the canvas; empty with isEverything
  bool operator==(const CompositeDamage&) const = default;

  bool isNothing() const { return !isEverything && rects.empty(); }
};

/// What changed in the pictures that a composite shows.
struct PictureChanges {
  gpu::PixelRect screen;  ///< pixels of the screen picture; empty when it is the same
  bool camera = false;    ///< the camera shows another picture
};

/// The area of the canvas outside which `now` gives the same pixels as `before`.
CompositeDamage compositeDamage(const CompositePlan& before, const CompositePlan& now,
                                const PictureChanges& changes, int pictureWidth, int pictureHeight);

}  // namespace vesk::compositor
