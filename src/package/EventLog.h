#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <vector>

#include "package/PackageError.h"
#include "package/RecordedEvent.h"

namespace vesk::package {

/// The events of a log in file order, and how many lines gave none.
struct EventLog {
  std::vector<RecordedEvent> events;
  std::size_t badLines = 0;
  bool operator==(const EventLog&) const = default;
};

/// Decodes "events.jsonl", one object a line, in one pass. Empty lines are skipped; a line that is
/// no valid event, holds a number that is not finite, nests deeper than 64 or is longer than 1 MiB
/// is counted and dropped. Null counts as absent; of a key that comes twice the last value counts,
/// though each must be of its type. The text must be UTF-8, a byte order mark before it is skipped;
/// a character that the very end of the text cuts through belongs to a cut last line and is no
/// failure.
/// @param text taken by value, because decoding needs room behind its end
std::expected<EventLog, PackageError> decodeEventLog(std::string text);

}  // namespace vesk::package
