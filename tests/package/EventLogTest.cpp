#include <gtest/gtest.h>

#include <string>

#include "package/EventLog.h"

namespace vesk::package {
namespace {

using namespace std::string_literals;

constexpr std::size_t longestLine = std::size_t{1} << 20;

/// The log of a text that must decode.
EventLog decode(const std::string& text) {
  return decodeEventLog(text).value();
}

bool isEvent(const std::string& line) {
  const auto log = decode(line);
  EXPECT_EQ(log.events.size() + log.badLines, 1U) << line;
  return log.badLines == 0;
}

/// A valid line of exactly this length.
std::string lineOfLength(std::size_t length) {
  const std::string head = R"({"t":1,"type":"key","combo":")";
  const std::string tail = "\"}";
  return head + std::string(length - head.size() - tail.size(), 'x') + tail;
}

/// A line whose unknown key holds containers so that the deepest one is at this depth.
std::string lineOfDepth(std::size_t depth, const std::string& open, const std::string& close) {
  std::string line = R"({"t":1,"type":"move","later":)";
  for (std::size_t level = 1; level < depth; ++level) line += open;
  line += open == "[" ? "" : "1";
  for (std::size_t level = 1; level < depth; ++level) line += close;
  return line + "}";
}

TEST(EventLog, anEmptyTextIsAnEmptyLog) {
  EXPECT_EQ(decode(""), EventLog{});
  EXPECT_EQ(decode("\n\n\n"), EventLog{});
}

TEST(EventLog, everyFieldIsRead) {
  const auto log = decode(
      R"({"t":1.25,"type":"click","x":0.5,"y":0.25,"button":"left","clickCount":2,"app":"终端"})"
      "\n"
      R"({"t":2,"type":"scroll","x":0,"y":1,"scrollDX":-1.5,"scrollDY":3})"
      "\n"
      R"({"t":3,"type":"key","combo":"⌘空格"})"
      "\n"
      R"({"t":4,"type":"gap","reason":"secureInputBegan"})"
      "\n");
  ASSERT_EQ(log.events.size(), 4U);
  EXPECT_EQ(log.badLines, 0U);
  EXPECT_EQ(log.events[0].t, 1.25);
  EXPECT_EQ(log.events[0].type, RecordedEvent::Kind::click);
  EXPECT_EQ(log.events[0].x, 0.5);
  EXPECT_EQ(log.events[0].y, 0.25);
  EXPECT_EQ(log.events[0].button, RecordedEvent::Button::left);
  EXPECT_EQ(log.events[0].clickCount, 2);
  EXPECT_EQ(log.events[0].app, "终端");
  EXPECT_EQ(log.events[1].scrollDX, -1.5);
  EXPECT_EQ(log.events[1].scrollDY, 3.0);
  EXPECT_EQ(log.events[1].app, std::nullopt);
  EXPECT_EQ(log.events[2].combo, "⌘空格");
  EXPECT_EQ(log.events[2].x, std::nullopt);
  EXPECT_EQ(log.events[3].reason, "secureInputBegan");
}

TEST(EventLog, aFileOfOnlyACutLineHasNoEvents) {
  const std::string line = R"({"t":1.25,"type":"move","x":0.5,"y":0.25})";
  for (std::size_t length = 1; length < line.size(); ++length) {
    EXPECT_FALSE(isEvent(line.substr(0, length)));
  }
  EXPECT_TRUE(isEvent(line));
}

TEST(EventLog, aBadLineAnywhereIsCountedAndDropped) {
  const std::string good = R"({"t":1,"type":"up"})";
  const auto log = decode("\n{}\n" + good + "\nnonsense\n\n" + good + "\n" + good.substr(0, 9));
  EXPECT_EQ(log.events.size(), 2U);
  EXPECT_EQ(log.badLines, 3U);
}

TEST(EventLog, theFileOrderIsKept) {
  const auto log = decode("{\"t\":2,\"type\":\"up\"}\n{\"t\":1,\"type\":\"up\"}\n");
  ASSERT_EQ(log.events.size(), 2U);
  EXPECT_EQ(log.events[0].t, 2);
}

class BadLine : public testing::TestWithParam<std::string> {};

TEST_P(BadLine, isCounted) {
  EXPECT_FALSE(isEvent(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    OfTheWrongContent, BadLine,
    testing::Values(R"({"type":"move"})", R"({"t":1})", R"({"t":null,"type":"move"})",
                    R"({"t":1,"type":null})", R"({"t":1,"type":"Move"})", R"({"t":1,"type":7})",
                    R"({"t":"1","type":"move"})", R"({"t":true,"type":"move"})",
                    R"({"t":1,"type":"move","x":"0.5"})", R"({"t":1,"type":"move","y":[]})",
                    R"({"t":1,"type":"move","x":false})",
                    R"({"t":1,"type":"up","button":"middle"})", R"({"t":1,"type":"up","button":1})",
                    R"({"t":1,"type":"up","clickCount":1.5})",
                    R"({"t":1,"type":"up","clickCount":9223372036854775808})",
                    R"({"t":1,"type":"up","clickCount":true})", R"({"t":1,"type":"key","app":1})",
                    R"({"t":1,"type":"key","combo":{}})", R"({"t":1e999,"type":"move"})",
                    R"({"t":1,"type":"move","x":-1e999})", R"({"t":1,"type":"move","later":1e999})",
                    R"({"t":1,"type":"move","later":[{"a":1e400}]})"));

INSTANTIATE_TEST_SUITE_P(
    OfTheWrongForm, BadLine,
    testing::Values(
        "]", "[]", "7", "null", "\"t\"", " ", "\r", "{}{}", R"({"t":1,"type":"move"}])",
        R"({"t":1,"type":"move"} {})", R"({"t":1,"type":"move",})", R"({"t":1 "type":"move"})",
        R"({"t":1,"type":"move")", R"({"t" 1,"type":"move"})", R"({t:1,"type":"move"})",
        R"({'t':1,"type":"move"})", R"({"t":01,"type":"move"})", R"({"t":1.,"type":"move"})",
        R"({"t":.5,"type":"move"})", R"({"t":+1,"type":"move"})", R"({"t":1.e2,"type":"move"})",
        R"({"t":1e,"type":"move"})", R"({"t":-,"type":"move"})", R"({"t":inf,"type":"move"})",
        R"({"t":nan,"type":"move"})", R"({"t":-inf,"type":"move"})", R"({"t":0x1,"type":"move"})",
        R"({"t":1,"type":"move","later":tru})", R"({"t":1,"type":"move","later":[1,]})",
        R"({"t":1,"type":"move","later":{"a"}})", R"({"t":1,"type":"move","later":})",
        R"({"t":1,"type":"move","later":nul})", R"({"t":1,"type":"move","later":[1})",
        R"({"t":1,"type":"move","later":"\q"})", R"({"t":1,"type":"move","later":"\u12"})",
        R"({"t":1,"type":"move","later":"\ud800"})", R"({"t":1,"type":"move","later":"\udc00"})",
        R"({"t":1,"type":"move","later":"\ud800\u0041"})",
        "{\"t\":1,\"type\":\"move\",\"later\":\"\t\"}",
        "{\"t\":1,\"type\":\"move\",\"later\":\"\0\"}"s, "{\"t\":1,\"type\":\"move\"}\0"s, "\0"s,
        "\x7F", "/**/{\"t\":1,\"type\":\"up\"}", R"({"t":1,"type":"move"}//)"));

class GoodLine : public testing::TestWithParam<std::string> {};

TEST_P(GoodLine, isAnEvent) {
  EXPECT_TRUE(isEvent(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    EventLog, GoodLine,
    testing::Values(
        " \t{ \"t\" : 1 , \"type\" : \"move\" } \r", R"({"type":"move","t":-0})",
        R"({"t":1,"type":"move","later":[[],{},[{"a":null,"b":[true,false,"\u00e9"]}]]})",
        R"({"t":1,"type":"move","x":null,"button":null,"app":null})",
        R"({"t":1e-999,"type":"move"})", R"({"t":123456789012345678901234567890,"type":"up"})",
        R"({"t":1,"type":"move","later":-123456789012345678901234567890})",
        R"({"\u0074":1,"type":"m\u006fve"})", R"({"t":1,"type":"move","":1})"));

TEST(EventLog, numbersHaveTheirExactValues) {
  const auto t = [](const std::string& number) {
    return decode("{\"t\":" + number + ",\"type\":\"up\"}").events.at(0).t;
  };
  EXPECT_EQ(t("0.8084821701049805"), 0.8084821701049805);
  EXPECT_EQ(t("4.9e-324"), 4.9e-324);
  EXPECT_EQ(t("1E+2"), 100.0);
  EXPECT_EQ(t("1e-999"), 0.0);
  EXPECT_EQ(t("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(t("123456789012345678901234567890"), 123456789012345678901234567890.0);
  EXPECT_EQ(t("9007199254740993"), 9007199254740992.0);
  EXPECT_EQ(t("-2"), -2.0);
}

TEST(EventLog, aWholeDecimalIsAnInteger) {
  const auto clickCount = [](const std::string& number) {
    return decode(R"({"t":1,"type":"up","clickCount":)" + number + "}").events.at(0).clickCount;
  };
  EXPECT_EQ(clickCount("2.0"), 2);
  EXPECT_EQ(clickCount("2e0"), 2);
  EXPECT_EQ(clickCount("9223372036854775807"), 9223372036854775807);
  EXPECT_EQ(clickCount("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(clickCount("null"), std::nullopt);
}

TEST(EventLog, escapesInTextsAreResolved) {
  const auto log = decode(
      R"({"t":1,"type":"key","combo":"\"\\\/\b\f\n\r\t\u0041\u00e9\u4f60\ud83d\ude00\u0000."})");
  EXPECT_EQ(log.events.at(0).combo, "\"\\/\b\f\n\r\tAé你😀\0."s);
}

TEST(EventLog, ofAKeyThatComesTwiceTheLastValueCounts) {
  const auto log = decode(R"({"t":1,"t":2,"type":"up","x":1,"x":null,"app":"a","app":"b"})");
  EXPECT_EQ(log.events.at(0).t, 2);
  EXPECT_EQ(log.events.at(0).x, std::nullopt);
  EXPECT_EQ(log.events.at(0).app, "b");
  EXPECT_FALSE(isEvent(R"({"t":1,"t":null,"type":"up"})"));
}

TEST(EventLog, nestingIsTakenUpToItsLimit) {
  EXPECT_TRUE(isEvent(lineOfDepth(64, "[", "]")));
  EXPECT_FALSE(isEvent(lineOfDepth(65, "[", "]")));
  EXPECT_TRUE(isEvent(lineOfDepth(64, "{\"a\":", "}")));
  EXPECT_FALSE(isEvent(lineOfDepth(65, "{\"a\":", "}")));
  EXPECT_FALSE(isEvent(std::string(longestLine, '[')));
}

TEST(EventLog, aLineIsTakenUpToItsLimit) {
  EXPECT_TRUE(isEvent(lineOfLength(longestLine)));
  EXPECT_FALSE(isEvent(lineOfLength(longestLine + 1)));
  EXPECT_TRUE(isEvent(lineOfLength(longestLine) + "\n"));
}

TEST(EventLog, aByteOrderMarkBeforeTheFirstLineIsNoPartOfIt) {
  EXPECT_TRUE(isEvent("\uFEFF{\"t\":1,\"type\":\"up\"}"));
  EXPECT_EQ(decode("\uFEFF"), EventLog{});
  EXPECT_FALSE(isEvent("\uFEFF\uFEFF{\"t\":1,\"type\":\"up\"}"));
}

TEST(EventLog, bytesThatAreNotUtf8FailTheLoad) {
  for (const auto& text : {"{\"t\":1,\"type\":\"key\",\"app\":\"\xFF\"}"s, "\xC0\x80"s, "\x80"s,
                           "\xED\xA0\x80"s, "\xF5"s, "\xE4\xBD\n"s, "\xE4\xBD{}"s}) {
    const auto log = decodeEventLog(text);
    ASSERT_FALSE(log);
    EXPECT_EQ(log.error().kind, PackageError::Kind::notUtf8);
    EXPECT_EQ(log.error().message, "事件日志“events.jsonl”不是 UTF-8 文本。");
  }
}

TEST(EventLog, aCharacterCutByTheEndBelongsToACutLine) {
  const std::string good = "{\"t\":1,\"type\":\"up\"}\n";
  for (const auto* cut : {"\xE4", "\xE4\xBD", "\xC3", "\xF0\x9F\x98"}) {
    const auto log = decode(good + R"({"t":2,"type":"key","app":")" + cut);
    EXPECT_EQ(log.events.size(), 1U);
    EXPECT_EQ(log.badLines, 1U);
    EXPECT_EQ(decode(good.substr(0, good.size() - 1) + cut).badLines, 1U);
  }
}

}  // namespace
}  // namespace vesk::package
