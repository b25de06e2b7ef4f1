#pragma once

#include "compositor/CompositePlan.h"
#include "compositor/ReferencePicture.h"

namespace vesk::compositor::test {

/// The pictures that a composite shows; null where the plan has no use for one.
struct ReferenceSources {
  const ReferencePicture* screen = nullptr;
  const ReferencePicture* camera = nullptr;
  const ReferencePicture* cursor = nullptr;  ///< colours multiplied by alpha
};

/// What a composite has to look like, worked out pixel by pixel in double precision and without
/// any graphics library. The target holds eight bits a channel, hence rounds after every draw.
DoubleImage referenceComposite(const CompositePlan& plan, const ReferenceSources& sources,
                               const glm::dvec4& clearColor);

}  // namespace vesk::compositor::test
