#include <gtest/gtest.h>

#include <locale>
#include <vector>

#include "app/CommandLine.h"

namespace vesk::app {
namespace {

CommandLine lineOf(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "/usr/bin/vesk");
  return CommandLine(arguments);
}

}  // namespace

TEST(CommandLine, aFlagIsPresentOnlyWhenAnArgumentEqualsIt) {
  const CommandLine line = lineOf({"--gate", "--fov=30", "--ease-profile"});
  EXPECT_TRUE(line.has("--gate"));
  EXPECT_FALSE(line.has("--gat"));
  EXPECT_FALSE(line.has("--fov"));
  EXPECT_FALSE(line.has("--ease"));
  EXPECT_FALSE(line.has(""));
}

TEST(CommandLine, theProgramsOwnPathIsPartOfTheList) {
  EXPECT_TRUE(lineOf({}).has("/usr/bin/vesk"));
  EXPECT_EQ(lineOf({"tail"}).value("/usr/bin/vesk"), "tail");
}

TEST(CommandLine, aValueIsTheArgumentBehindTheFirstOccurrence) {
  const CommandLine line = lineOf({"--ease", "电影", "--ease", "平稳"});
  EXPECT_EQ(line.value("--ease"), "电影");
}

TEST(CommandLine, theNextFlagIsTakenAsTheValue) {
  EXPECT_EQ(lineOf({"--package", "--gate"}).value("--package"), "--gate");
}

TEST(CommandLine, aFlagWithAValueCountsAsAbsentAtTheEnd) {
  EXPECT_FALSE(lineOf({"--gate", "--package"}).value("--package"));
  EXPECT_FALSE(lineOf({"--gate"}).value("--package"));
}

TEST(CommandLine, onlyTheFirstOccurrenceIsLookedAt) {
  EXPECT_EQ(lineOf({"--fov", "--fov", "30"}).value("--fov"), "--fov");
  EXPECT_FALSE(lineOf({"--fov", "--fov", "30"}).number("--fov"));
}

TEST(CommandLine, anEmptyListHoldsNothing) {
  const CommandLine line{std::span<const char* const>{}};
  EXPECT_FALSE(line.has("--gate"));
  EXPECT_FALSE(line.value("--gate"));
}

TEST(CommandLine, numbersAreReadFromTheWholeString) {
  EXPECT_EQ(parseNumber("12"), 12);
  EXPECT_EQ(parseNumber("-0.5"), -0.5);
  EXPECT_EQ(parseNumber("+1.5"), 1.5);
  EXPECT_EQ(parseNumber("1e3"), 1000);
  EXPECT_EQ(parseNumber(".5"), 0.5);
  for (const char* text : {"", " 1", "1 ", "1x", "x", "1,5", "+", "-", "+-1", "--1", "++1", "1e"}) {
    EXPECT_FALSE(parseNumber(text)) << '"' << text << '"';
  }
}

TEST(CommandLine, aNumberThatIsNotFiniteIsNone) {
  for (const char* text : {"inf", "-inf", "nan", "infinity", "1e999"}) {
    EXPECT_FALSE(parseNumber(text)) << text;
  }
}

TEST(CommandLine, numbersAreTheSameUnderEveryLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  const auto point = parseNumber("1.5");
  const auto comma = parseNumber("1,5");
  std::locale::global(before);
  EXPECT_EQ(point, 1.5);
  EXPECT_FALSE(comma);
}

}  // namespace vesk::app
