#pragma once

#include <string>
#include <vector>

#include "app/SelfCheck.h"
#include "compositor/CompositeSettings.h"
#include "package/RecordingMeta.h"

namespace vesk::app {

/// Shows that an export draws with a faithful and independent copy of the editor's look. Needs a
/// machine that can draw.
CheckOutcome checkExportClone(package::Timestamp now);

/// What differs between a look and its clone, as the check lists it.
/// @param duration seconds over which the camera tracks are compared.
std::vector<std::string> cloneDifferences(const compositor::CompositeSettings& source,
                                          const compositor::CompositeSettings& clone,
                                          double duration);

}  // namespace vesk::app
