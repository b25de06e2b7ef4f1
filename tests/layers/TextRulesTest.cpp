#include <gtest/gtest.h>

#include "layers/TextRules.h"

namespace vesk::layers {
namespace {

using namespace std::string_literals;

std::string lines(std::size_t count) {
  std::string text;
  for (std::size_t line = 0; line < count; ++line) text += "x\n";
  return text;
}

TEST(FileLength, isBelowTheLimit) {
  EXPECT_FALSE(lengthBreach(""));
  EXPECT_FALSE(lengthBreach(lines(longestFile - 1)));
  EXPECT_TRUE(lengthBreach(lines(longestFile)));
}

// The samples are put together from pieces, because the rule reads this file as well.
TEST(Wording, refersToNoNumberedTextElsewhere) {
  for (const auto& line :
       {"// see Par"s + "t 2.4"s, "as Par"s + "ts 1.1 and 1.2 say"s, "in spe"s + "c.md"s,
        "// the spe"s + "c says"s, "the spe"s + "cification"s, "closes iss"s + "ue #12"s,
        "// \u00a7"s + " 4"s, "\u00a7"s + "3.1"s}) {
    EXPECT_TRUE(wordingBreach(line)) << line;
  }
}

TEST(Wording, leavesNoWorkForLater) {
  for (const auto& line : {"// TO"s + "DO: more"s, "// FIX"s + "ME"s, "XX"s + "X"s}) {
    EXPECT_TRUE(wordingBreach(line)) << line;
  }
}

TEST(Wording, switchesNoTestOff) {
  for (const auto& line :
       {"TEST(Ease, DISA"s + "BLED_works) {"s, "  GTEST_SK"s + "IP() << \"no GPU\";"s}) {
    EXPECT_TRUE(wordingBreach(line)) << line;
  }
}

TEST(Wording, ofOrdinaryCodeIsFine) {
  for (const auto* line :
       {"// part of the picture", "the specific case", "version 2.4",
        "\"压它要牺牲跟随性，见 \u00a73.2.2）\"", "a known issue of the driver"}) {
    EXPECT_FALSE(wordingBreach(line)) << line;
  }
}

}  // namespace
}  // namespace vesk::layers
