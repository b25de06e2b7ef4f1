#pragma once

#include <cstdint>

#include "app/SelfCheck.h"
#include "package/EditDocument.h"
#include "package/RecordingMeta.h"

namespace vesk::app {

/// A document in which every field of every record differs from its default, with an enabled and a
/// disabled segment.
package::EditDocument documentWithoutDefaults();

/// What came of writing a document and reading it again.
struct PersistedDocument {
  package::EditDocument written;
  package::EditDocument read;
  std::uintmax_t fileSize = 0;                  ///< bytes
  package::EditDocument::Segment stored;        ///< a segment of the document
  package::EditDocument::Segment backAndForth;  ///< the same by way of its live form
};

/// The verdict on it.
CheckOutcome judge(const PersistedDocument& persisted);

/// The self-check `--test-persist`: saves that document into a package of the temporary directory,
/// which stays behind, and loads it again.
CheckOutcome checkPersistence(package::Timestamp now);

}  // namespace vesk::app
