#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "package/EventCounts.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

using namespace std::string_literals;

constexpr std::size_t pieceSize = std::size_t{256} << 10;

std::optional<EventCounts> countsOf(const std::string& text) {
  const TemporaryDirectory directory;
  return countEvents(directory.put("events.jsonl", text));
}

bool holds(std::string_view line, std::string_view word) {
  return line.find(word) != line.npos;
}

/// The rule, line by line.
EventCounts plainCounts(std::string_view text) {
  EventCounts counts;
  for (std::size_t start = 0; start < text.size();) {
    const auto line = text.substr(start, text.find('\n', start) - start);
    start += line.size() + 1;
    if (holds(line, R"("click")")) {
      ++counts.clicks;
    } else if (holds(line, R"("zoomIn")") || holds(line, R"("zoomOut")")) {
      ++counts.marks;
    }
  }
  return counts;
}

TEST(EventCounts, anEmptyLogHasNone) {
  EXPECT_EQ(countsOf(""), EventCounts{});
  EXPECT_EQ(countsOf("\n\n"), EventCounts{});
}

TEST(EventCounts, clicksAndMarksAreCountedByLine) {
  EXPECT_EQ(countsOf(R"({"t":1,"type":"click","clickCount":1}
{"t":2,"type":"move","x":0.5,"y":0.5}
{"t":3,"type":"zoomIn"}
{"t":4,"type":"up"}
{"t":5,"type":"zoomOut"}
{"t":6,"type":"click"})"),
            (EventCounts{.clicks = 2, .marks = 2}));
}

TEST(EventCounts, aLineCountsOnce) {
  EXPECT_EQ(countsOf(R"("click" "click" "zoomIn")"), (EventCounts{.clicks = 1, .marks = 0}));
  EXPECT_EQ(countsOf(R"("zoomOut" "zoomIn" "zoomIn")"), (EventCounts{.clicks = 0, .marks = 1}));
}

TEST(EventCounts, aClickOutdoesAMarkWhereverItStands) {
  EXPECT_EQ(countsOf(R"("zoomIn" "click")"), (EventCounts{.clicks = 1, .marks = 0}));
  EXPECT_EQ(countsOf(R"("click" "zoomIn")"), (EventCounts{.clicks = 1, .marks = 0}));
}

TEST(EventCounts, onlyWholeWordsInDoubleQuotesCount) {
  EXPECT_EQ(countsOf("click \"click 'click' \"clickCount\" \"cli\nck\" \"Click\" k k\" \"k\"\n"),
            EventCounts{});
  EXPECT_EQ(countsOf("zoomIn \"zoomInn\" \"zoom\" \"zoomin\" z \"z\" \"zoomOu\nt\"\n"),
            EventCounts{});
}

TEST(EventCounts, theSearchDoesNotParse) {
  EXPECT_EQ(countsOf("no json \"click\"\n{\"type\":\"key\",\"combo\":\"zoomIn\"}\n"),
            (EventCounts{.clicks = 1, .marks = 1}));
}

TEST(EventCounts, aWordMayLieAcrossAnyBorderOfTheReading) {
  const TemporaryDirectory directory;
  for (const std::string_view word : {R"("click")", R"("zoomIn")", R"("zoomOut")"}) {
    for (std::size_t before = 0; before <= word.size() + 1; ++before) {
      auto text = std::string(2 * pieceSize + 100, ' ');
      text[5] = '\n';
      // The pieces after the first begin with what the one before kept, so try both reckonings.
      for (const std::size_t border : {pieceSize, 2 * pieceSize}) {
        text.replace(border - before, word.size(), word);
        text[border + 20] = '\n';
      }
      EXPECT_EQ(countEvents(directory.put("log", text)), plainCounts(text)) << word << before;
    }
  }
}

TEST(EventCounts, aLineMayBeLongerThanAnyPiece) {
  const auto gap = std::string(2 * pieceSize + 3, ' ');
  EXPECT_EQ(countsOf("\"zoomIn\"" + gap + "\"click\"" + gap + "\"click\"\n\"zoomOut\""),
            (EventCounts{.clicks = 1, .marks = 1}));
}

TEST(EventCounts, agreesWithThePlainRuleOnRandomTexts) {
  std::mt19937 random(20261121);
  const std::vector<std::string> words{"\"click\"", "\"zoomIn\"", "\"zoomOut\"", "\n", "\n", "k",
                                       "z",         "\"zoom",     "\"clic",      "录", "\"", "x"};
  const TemporaryDirectory directory;
  for (int round = 0; round < 20; ++round) {
    std::string text;
    while (text.size() < pieceSize + pieceSize / 2) {
      text += words[std::uniform_int_distribution<std::size_t>(0, words.size() - 1)(random)];
      text.append(std::uniform_int_distribution<std::size_t>(0, 40)(random), '.');
    }
    EXPECT_EQ(countEvents(directory.put("log", text)), plainCounts(text)) << round;
  }
}

TEST(EventCounts, whatIsNoUtf8HasNone) {
  EXPECT_EQ(countsOf("\"click\"\n\xFF\n"), std::nullopt);
  EXPECT_EQ(countsOf("\"click\"\n\xE5\xBD\n\"click\"\n"), std::nullopt);
  EXPECT_EQ(countsOf("\xC0\xAF"), std::nullopt);
  EXPECT_EQ(countsOf(std::string(pieceSize - 1, ' ') + "\xE5 \"click\""), std::nullopt);
}

TEST(EventCounts, aCharacterMayLieAcrossAnyBorderOfTheReading) {
  const std::string character = "\xF0\x9F\x98\x80";
  for (std::size_t before = 0; before <= character.size(); ++before) {
    const auto text = std::string(pieceSize - before, ' ') + character + "\n\"click\"\n";
    EXPECT_EQ(countsOf(text), (EventCounts{.clicks = 1, .marks = 0})) << before;
  }
}

TEST(EventCounts, aCharacterCutByTheEndBelongsToACutLastLine) {
  EXPECT_EQ(countsOf("\"click\"\n{\"app\":\"\xE5\xBD"), (EventCounts{.clicks = 1, .marks = 0}));
}

TEST(EventCounts, zeroBytesAreText) {
  EXPECT_EQ(countsOf("\0\0\"click\"\0\n"s), (EventCounts{.clicks = 1, .marks = 0}));
}

TEST(EventCounts, whatIsNoRegularFileHasNone) {
  const TemporaryDirectory directory;
  EXPECT_EQ(countEvents(directory / "missing"), std::nullopt);
  EXPECT_EQ(countEvents(directory.path()), std::nullopt);
  EXPECT_EQ(countEvents("/dev/zero"), std::nullopt);
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(countEvents(directory / "pipe"), std::nullopt);
}

TEST(EventCounts, aLogOfMoreThanTwoGigabytesIsNotRead) {
  const TemporaryDirectory directory;
  const auto file = directory.put("events.jsonl", "\"click\"\n");
  std::filesystem::resize_file(file, (std::uintmax_t{2} << 30) + 1);
  EXPECT_EQ(countEvents(file), std::nullopt);
}

TEST(EventCounts, aLineFullOfWordsCostsNoMoreThanOthers) {
  std::string text;
  while (text.size() < 16 * pieceSize) text += "\"zoomIn\"";
  const TemporaryDirectory directory;
  const auto file = directory.put("log", text);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(countEvents(file), (EventCounts{.clicks = 0, .marks = 1}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace vesk::package
