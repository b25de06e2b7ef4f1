// Any bytes decode to a log or to an error; every event survives being written and read again, and
// the decoder takes no line that another JSON parser would refuse.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "package/EventLog.h"

namespace {

using vesk::package::EventLog;

void require(bool condition) {
  if (!condition) std::abort();
}

void checkRoundTrip(const EventLog& log) {
  std::string text;
  for (const auto& event : log.events) text += encodeRecordedEvent(event) + "\n";
  const auto again = vesk::package::decodeEventLog(text);
  require(again.has_value() && again->badLines == 0 && again->events == log.events);
}

void checkVerdict(std::string_view text, const EventLog& log) {
  const bool isOneLine = text.find('\n') == std::string_view::npos;
  if (isOneLine && !log.events.empty()) require(nlohmann::json::accept(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto log = vesk::package::decodeEventLog(text);
  if (!log) return 0;
  require(log->events.size() + log->badLines <=
          static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1);
  checkRoundTrip(*log);
  checkVerdict(text, *log);
  return 0;
}
