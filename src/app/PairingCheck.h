#pragma once

#include "app/SelfCheck.h"
#include "package/RecordingMeta.h"

namespace vesk::app {

/// The self-check `--test-pairing`: writes a synthetic package for each of eight ways to press the
/// two hot keys, loads it and compares the segments that come of it. The packages stay behind in
/// the temporary directory.
CheckOutcome checkPairing(package::Timestamp now);

}  // namespace vesk::app
