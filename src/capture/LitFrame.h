#pragma once

#include "media/PictureConverter.h"

namespace vesk::capture {

/// Whether a camera's picture shows anything: cameras often begin with black pictures until their
/// exposure has settled. Looks at 16 rows of 20 pixels spread over the picture; their green has to
/// be 8 of 255 in the mean. A picture without pixels counts as lit.
bool isLit(const media::BgraView& picture);

}  // namespace vesk::capture
