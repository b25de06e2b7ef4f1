#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <string_view>

#include "app/SelfCheck.h"
#include "package/EditDocument.h"
#include "package/PackageError.h"
#include "package/RecordingMeta.h"

namespace vesk::app {

/// What the check looks at: the decoding of a document and the loading of a package's.
struct EditDocumentReading {
  using Document = package::EditDocument;

  std::function<std::expected<Document, package::PackageError>(std::string_view json)> decode;
  std::function<Document::LoadResult(const std::filesystem::path& package, package::Timestamp now)>
      load = Document::load;

  /// The reading of this program.
  static EditDocumentReading real();
};

/// The self-check `--test-decode-resilience`: documents that are old, partial or damaged keep what
/// they have, and a file that is no document is copied before anything is saved over it. The
/// package of the last case stays behind in the temporary directory until the next run.
CheckOutcome checkDecodeResilience(
    package::Timestamp now, const EditDocumentReading& reading = EditDocumentReading::real());

}  // namespace vesk::app
