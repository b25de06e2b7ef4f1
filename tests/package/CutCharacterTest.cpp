#include <gtest/gtest.h>

#include <string>

#include "package/CutCharacter.h"

namespace vesk::package {
namespace {

TEST(CutCharacter, aWholeTextStays) {
  for (const std::string text : {"", "a", "é", "录", "a录", "😀", "录a"}) {
    EXPECT_EQ(withoutCutCharacter(text), text);
  }
}

TEST(CutCharacter, theBytesOfACutOneGo) {
  for (const std::string character : {"é", "录", "😀"}) {
    for (std::size_t length = 1; length < character.size(); ++length) {
      EXPECT_EQ(withoutCutCharacter("a" + character.substr(0, length)), "a");
      EXPECT_EQ(withoutCutCharacter(character.substr(0, length)), "");
    }
  }
}

TEST(CutCharacter, whatCanBeginNoCharacterStaysForTheCheck) {
  for (const std::string text : {"a\xFF", "a\xC0", "a\x80", "\x80\x80\x80\x80", "\xF5"}) {
    EXPECT_EQ(withoutCutCharacter(text), text);
  }
}

}  // namespace
}  // namespace vesk::package
