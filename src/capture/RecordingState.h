#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>

#include "package/RecordedEvent.h"

namespace vesk::capture {

/// How far a take is.
namespace state {

/// Nothing has been recorded yet.
struct Idle {
  bool operator==(const Idle&) const = default;
};
/// The package, the writers and the streams are being set up.
struct Preparing {
  bool operator==(const Preparing&) const = default;
};
struct Recording {
  bool operator==(const Recording&) const = default;
};
/// The writers are closing.
struct Finishing {
  bool operator==(const Finishing&) const = default;
};
struct Finished {
  std::filesystem::path url;  ///< the package, which can be opened
  bool operator==(const Finished&) const = default;
};
/// The start or the end went wrong.
struct Failed {
  std::string message;  ///< for the user
  bool operator==(const Failed&) const = default;
};

}  // namespace state

using RecordingState = std::variant<state::Idle, state::Preparing, state::Recording,
                                    state::Finishing, state::Finished, state::Failed>;

/// A manual mark as an event: a second mark of the same kind differs from the first.
struct MarkPulse {
  package::RecordedEvent::Kind kind = package::RecordedEvent::Kind::zoomIn;
  std::int64_t seq = 1;  ///< from 1, rising by one with each mark of a take
  bool operator==(const MarkPulse&) const = default;
};

}  // namespace vesk::capture
