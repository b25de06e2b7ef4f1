// The decoder against a plain reading of the same lines with another parser, on seeded random
// lines, whole and damaged.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <string>

#include "package/EventLog.h"

namespace vesk::package {
namespace {

using nlohmann::json;

constexpr int deepestNesting = 64;

/// Parses with the two things that nlohmann-json leaves open: the depth, and keys that come twice,
/// which the test leaves out.
class Document {
 public:
  explicit Document(const std::string& line) {
    std::vector<std::set<std::string>> keys;
    value_ = json::parse(
        line,
        [&](int depth, json::parse_event_t event, json& parsed) {
          if (event == json::parse_event_t::object_start) keys.emplace_back();
          if (event == json::parse_event_t::object_end) keys.pop_back();
          if (event == json::parse_event_t::key) {
            hasDuplicate_ |= !keys.back().insert(parsed.get<std::string>()).second;
          }
          const bool opens = event == json::parse_event_t::object_start ||
                             event == json::parse_event_t::array_start;
          isDeep_ |= opens && depth >= deepestNesting;
          return true;
        },
        /*allow_exceptions=*/false);
  }

  bool isValid() const { return !value_.is_discarded() && !isDeep_; }
  bool hasDuplicate() const { return hasDuplicate_; }
  const json& value() const { return value_; }

 private:
  json value_;
  bool isDeep_ = false;
  bool hasDuplicate_ = false;
};

/// A field that is there, or null.
const json* present(const json& object, const char* key) {
  const auto found = object.find(key);
  return found == object.end() || found->is_null() ? nullptr : &*found;
}

bool readNumber(const json& object, const char* key, std::optional<double>& value) {
  const auto* field = present(object, key);
  if (field == nullptr) return true;
  if (!field->is_number()) return false;
  value = field->get<double>();
  return true;
}

bool readText(const json& object, const char* key, OptionalText& value) {
  const auto* field = present(object, key);
  if (field == nullptr) return true;
  if (!field->is_string()) return false;
  value = field->get<std::string>();
  return true;
}

bool readClickCount(const json& object, RecordedEvent& event) {
  const auto* field = present(object, "clickCount");
  if (field == nullptr) return true;
  if (!field->is_number()) return false;
  if (field->is_number_float()) {
    const auto number = field->get<double>();
    if (std::floor(number) != number || std::abs(number) > 9e18) return false;
    event.clickCount = static_cast<std::int64_t>(number);
    return true;
  }
  if (field->is_number_unsigned() && field->get<std::uint64_t>() > INT64_MAX) return false;
  event.clickCount = field->get<std::int64_t>();
  return true;
}

std::optional<RecordedEvent> plainReading(const json& object) {
  if (!object.is_object()) return std::nullopt;
  RecordedEvent event;
  std::optional<double> t;
  OptionalText type;
  OptionalText button;
  if (!readNumber(object, "t", t) || !readText(object, "type", type) ||
      !readText(object, "button", button) || !readNumber(object, "x", event.x) ||
      !readNumber(object, "y", event.y) || !readNumber(object, "scrollDX", event.scrollDX) ||
      !readNumber(object, "scrollDY", event.scrollDY) || !readClickCount(object, event) ||
      !readText(object, "combo", event.combo) || !readText(object, "app", event.app) ||
      !readText(object, "reason", event.reason) || !t || !type || !recordedEventKind(*type) ||
      (button && !recordedEventButton(*button))) {
    return std::nullopt;
  }
  event.t = *t;
  event.type = *recordedEventKind(*type);
  if (button) event.button = recordedEventButton(*button);
  return event;
}

/// Random lines that are mostly events, and random damage.
class LineSource {
 public:
  explicit LineSource(std::uint64_t seed) : random_(seed) {}

  std::string line() {
    std::string text = "{";
    const std::size_t count = 2 + below(6);
    text += fmt::format("\"t\":{},\"type\":\"{}\"", number(), pick(kinds));
    for (std::size_t index = 0; index < count; ++index) {
      const auto key = pick(keys);
      text +=
          fmt::format(",{}\"{}\":{}", pick(spaces), key, below(8) == 0 ? value(0) : fitting(key));
    }
    return text + "}";
  }

  std::string damaged(std::string text) {
    const std::size_t count = 1 + below(3);
    for (std::size_t index = 0; index < count; ++index) damage(text);
    return text;
  }

 private:
  static constexpr std::array<std::string_view, 10> kinds{"click",   "up",        "move", "scroll",
                                                          "key",     "appChange", "gap",  "zoomIn",
                                                          "zoomOut", "m\\u006fve"};
  static constexpr std::array<std::string_view, 11> keys{
      "x",        "y",        "button", "clickCount", "app",       "combo",
      "scrollDX", "scrollDY", "reason", "later",      "th\\u0065n"};
  static constexpr std::array<std::string_view, 4> spaces{"", " ", "\t", " \r "};
  static constexpr std::array<std::string_view, 12> texts{
      "",        "终端",  "⌘A",           "\\n\\t\\\"", "\\u4f60", "\\ud83d\\ude00",
      "\\ud800", "\\u12", "plain \\\\ .", "é",          "\\/\\b",  "left"};
  static constexpr std::array<std::string_view, 14> oddNumbers{"0",
                                                               "-0",
                                                               "60.0",
                                                               "1e3",
                                                               "-1.5E-7",
                                                               "1e999",
                                                               "1e-999",
                                                               "01",
                                                               "1.",
                                                               "18446744073709551616",
                                                               "9223372036854775807",
                                                               "-9223372036854775809",
                                                               "123456789012345678901234567890",
                                                               "5e-324"};
  static constexpr std::string_view alphabet = "{}[]\",:0123456789.eE+-tfnul \\/x\n\x01";

  std::size_t below(std::size_t count) { return random_() % count; }

  template <std::size_t count>
  std::string_view pick(const std::array<std::string_view, count>& choices) {
    return choices.at(below(count));
  }

  std::string number() {
    if (below(6) == 0) return std::string(pick(oddNumbers));
    std::uniform_real_distribution<double> range(-10, 1000);
    return fmt::format("{}", range(random_));
  }

  std::string text() { return fmt::format("\"{}\"", pick(texts)); }

  std::string fitting(std::string_view key) {
    if (below(10) == 0) return "null";
    if (key == "button") return "\"right\"";
    if (key == "clickCount") return below(2) == 0 ? "2" : number();
    if (key == "x" || key == "y" || key.starts_with("scroll")) return number();
    if (key == "app" || key == "combo" || key == "reason") return text();
    return value(0);
  }

  std::string value(int depth) {
    switch (below(depth < 6 ? 8 : 4)) {
      case 0:
        return number();
      case 1:
        return text();
      case 2:
        return below(2) == 0 ? "true" : "false";
      case 3:
        return "null";
      case 4:
        return fmt::format("[{}]", value(depth + 1));
      case 5:
        return fmt::format("[{},{}]", value(depth + 1), value(depth + 1));
      case 6:
        return nested(55 + below(15));
      default:
        return fmt::format("{{\"a\":{},\"b\":{}}}", value(depth + 1), value(depth + 1));
    }
  }

  std::string nested(std::size_t depth) {
    return std::string(depth, '[') + (below(2) == 0 ? "" : number()) + std::string(depth, ']');
  }

  void damage(std::string& text) {
    if (text.empty()) return;
    const std::size_t at = below(text.size());
    switch (below(4)) {
      case 0:
        text[at] = alphabet[below(alphabet.size())];
        break;
      case 1:
        text.erase(at, 1 + below(3));
        break;
      case 2:
        text.insert(at, 1, alphabet[below(alphabet.size())]);
        break;
      default:
        text.resize(at);
        break;
    }
    // A line is what stands between two line feeds.
    std::erase(text, '\n');
  }

  std::mt19937_64 random_;
};

/// The number of lines that were events.
std::size_t compare(const std::string& line) {
  const Document document(line);
  if (document.hasDuplicate()) return 0;
  const auto expected = document.isValid() ? plainReading(document.value()) : std::nullopt;
  const auto log = decodeEventLog(line);
  if (!log) {
    // Damage may have cut a character into halves; the parser of the plain reading refuses that
    // too.
    EXPECT_EQ(expected, std::nullopt) << line;
    return 0;
  }
  EXPECT_EQ(log->events.size(), expected ? 1U : 0U) << line;
  if (!expected || log->events.empty()) return 0;
  EXPECT_EQ(log->events.front(), *expected) << line;
  return 1;
}

TEST(EventLogDifferential, agreesWithAPlainReadingOnRandomLines) {
  LineSource source(20261120);
  constexpr int rounds = 20000;
  std::size_t whole = 0;
  std::size_t damaged = 0;
  for (int round = 0; round < rounds; ++round) {
    const std::string line = source.line();
    whole += compare(line);
    damaged += compare(source.damaged(line));
  }
  // Both verdicts must come up often, or the test would compare nothing.
  EXPECT_GT(whole, rounds / 10U);
  EXPECT_LT(whole, rounds * 9U / 10U);
  EXPECT_GT(damaged, rounds / 100U);
}

}  // namespace
}  // namespace vesk::package
