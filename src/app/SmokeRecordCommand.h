#pragma once

#include <string>
#include <vector>

#include "app/CommandContext.h"
#include "app/SelfCheck.h"
#include "capture/Geometry.h"
#include "package/RecordedEvent.h"

namespace vesk::app {

/// `--smoke-record`: whether what a take shows and what its log says of the pointer agree.
int smokeRecord(const CommandContext& context);

/// A place at which the pointer was put during a take.
struct PointerProbe {
  capture::PicturePoint place;
  double leftAt = 0;  ///< when it left again, seconds of the movie
};

/// What a take of the probes comes to.
struct SmokeEvidence {
  capture::PixelSize expected;
  capture::PixelSize actual;
  std::vector<PointerProbe> probes;
};

/// The lines and the verdict on a take's log.
CheckOutcome judgeSmokeRecord(const SmokeEvidence& evidence,
                              const std::vector<package::RecordedEvent>& events);

}  // namespace vesk::app
