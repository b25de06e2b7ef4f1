#include "package/EventLog.h"

#include <simdjson.h>

#include <string_view>

#include "package/CutCharacter.h"
#include "package/HugePages.h"
#include "package/JsonReader.h"

namespace vesk::package {

namespace {

constexpr std::size_t longestLine = std::size_t{1} << 20;
constexpr std::size_t charactersPerEvent = 64;

bool read(JsonReader& reader, std::optional<double>& value) {
  return reader.readNumber(value.emplace());
}

bool read(JsonReader& reader, std::optional<std::int64_t>& value) {
  return reader.readInteger(value.emplace());
}

bool read(JsonReader& reader, OptionalText& value) {
  std::string_view text;
  if (!reader.readString(text)) return false;
  value = text;
  return true;
}

bool read(JsonReader& reader, std::optional<RecordedEvent::Kind>& value) {
  std::string_view text;
  if (!reader.readString(text)) return false;
  value = recordedEventKind(text);
  return value.has_value();
}

bool read(JsonReader& reader, std::optional<RecordedEvent::Button>& value) {
  std::string_view text;
  if (!reader.readString(text)) return false;
  value = recordedEventButton(text);
  return value.has_value();
}

/// Null counts as absent, also behind an earlier value of the same key.
template <typename Optional>
bool readOptional(JsonReader& reader, Optional& value) {
  if (!reader.takeNull()) return read(reader, value);
  value.reset();
  return true;
}

/// Reads a line into a fresh event.
class EventReader {
 public:
  /// @param line see JsonReader
  EventReader(std::string_view line, RecordedEvent& event) : reader_(line), event_(event) {}

  bool read() {
    if (!readObject() || !reader_.atEnd() || !t_ || !type_) return false;
    event_.t = *t_;
    event_.type = *type_;
    return true;
  }

 private:
  bool readObject() {
    if (!reader_.take('{')) return false;
    if (reader_.take('}')) return true;
    do {
      if (!readField()) return false;
    } while (reader_.take(','));
    return reader_.take('}');
  }

  /// The frequent keys come first.
  bool readField() {
    std::string_view key;
    if (!reader_.readString(key) || !reader_.take(':')) return false;
    if (key == "t") return readOptional(reader_, t_);
    if (key == "type") return readOptional(reader_, type_);
    if (key == "x") return readOptional(reader_, event_.x);
    if (key == "y") return readOptional(reader_, event_.y);
    if (key == "button") return readOptional(reader_, event_.button);
    if (key == "clickCount") return readOptional(reader_, event_.clickCount);
    if (key == "app") return readOptional(reader_, event_.app);
    if (key == "combo") return readOptional(reader_, event_.combo);
    if (key == "scrollDX") return readOptional(reader_, event_.scrollDX);
    if (key == "scrollDY") return readOptional(reader_, event_.scrollDY);
    if (key == "reason") return readOptional(reader_, event_.reason);
    return reader_.skipValue(1);
  }

  JsonReader reader_;
  RecordedEvent& event_;
  std::optional<double> t_;
  std::optional<RecordedEvent::Kind> type_;
};

bool decodeLine(std::string_view line, RecordedEvent& event) {
  return line.size() <= longestLine && EventReader(line, event).read();
}

std::vector<RecordedEvent> roomForEvents(std::size_t textLength) {
  std::vector<RecordedEvent> events;
  events.reserve(textLength / charactersPerEvent);
  preferHugePages(events.data(), events.capacity() * sizeof(RecordedEvent));
  return events;
}

}  // namespace

std::expected<EventLog, PackageError> decodeEventLog(std::string text) {
  if (!simdjson::validate_utf8(withoutCutCharacter(text))) {
    return std::unexpected(
        PackageError{PackageError::Kind::notUtf8, "事件日志“events.jsonl”不是 UTF-8 文本。"});
  }
  // Every line then ends with a line feed, as JsonReader wants it.
  if (!text.ends_with('\n')) text += '\n';

  EventLog log{.events = roomForEvents(text.size())};
  std::string_view rest = text;
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (rest.starts_with(byteOrderMark)) rest.remove_prefix(byteOrderMark.size());
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(line.size() + 1);
    if (line.empty()) continue;
    if (!decodeLine(line, log.events.emplace_back())) {
      log.events.pop_back();
      ++log.badLines;
    }
  }
  return log;
}

}  // namespace vesk::package
