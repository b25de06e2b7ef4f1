// Any bytes decode to an index or to an error, and an index that was decoded survives being
// written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "package/RecordingMeta.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vesk::package;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto meta = decodeRecordingMeta(text, {});
  if (!meta) {
    if (meta.error().message.empty()) std::abort();
    return 0;
  }
  const auto again = decodeRecordingMeta(encodeRecordingMeta(*meta), {});
  if (!again || *again != *meta) std::abort();
  return 0;
}
