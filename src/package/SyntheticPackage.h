#pragma once

#include <filesystem>
#include <optional>
#include <span>

#include "package/RecordedEvent.h"
#include "package/RecordingMeta.h"

namespace vesk::package {

/// One event of a synthetic recording.
struct SyntheticMark {
  double t = 0;
  RecordedEvent::Kind kind = RecordedEvent::Kind::zoomIn;
  double x = 0.5;
  double y = 0.5;
  bool operator==(const SyntheticMark&) const = default;
};

/// Writes a real package of known content into the temporary directory, for self-checks. Its name
/// is a function of the number of marks and the duration, and it replaces what stands there.
/// Nothing when the directory cannot be made or a file of it cannot be written.
std::optional<std::filesystem::path> makeSyntheticPackage(std::span<const SyntheticMark> marks,
                                                          double duration, Timestamp now);

}  // namespace vesk::package
