// Any bytes decode to an edit document or to an error with a message; a document that was decoded
// can be written, and reading that gives the same document and the same text again. Nor do the
// settings that come of it keep it from being saved.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "motion/StoredSegment.h"
#include "package/EditDocumentCoding.h"

namespace {

using vesk::package::EditDocument;

void require(bool condition) {
  if (!condition) std::abort();
}

void checkRoundTrip(const EditDocument& document) {
  const auto text = encodeEditDocument(document);
  require(text.has_value());
  const auto again = vesk::package::decodeEditDocument(*text);
  require(again.has_value() && *again == document);
  require(encodeEditDocument(*again) == text);
}

template <typename Record, typename Settings>
void passThrough(Record& record, Settings settings) {
  record.applyTo(settings);
  record = Record(settings);
}

/// The document as a session saves it that did nothing but open it.
EditDocument savedAgain(EditDocument document) {
  using namespace vesk::package;
  passThrough(document.ripple, RippleSettings());
  passThrough(document.cursor, CursorSettings());
  passThrough(document.camera3D, Camera3DSettings());
  passThrough(document.pip, PiPSettings());
  passThrough(document.frame, FrameStyle());
  if (document.segments) {
    for (auto& segment : *document.segments) {
      segment = vesk::motion::storedSegment(vesk::motion::zoomSegment(segment));
    }
  }
  return document;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto document = vesk::package::decodeEditDocument(text);
  if (!document) {
    require(!document.error().message.empty());
    return 0;
  }
  checkRoundTrip(*document);
  checkRoundTrip(savedAgain(*document));
  return 0;
}
