#include <gtest/gtest.h>

#include "capture/Shortcut.h"

namespace vesk::capture {
namespace {

const KeyNames names{[](KeyCode keyCode) { return keyCode == 18 ? "1" : "a"; }};

TEST(Shortcut, isWrittenAsModifiersInAFixedOrderAndKey) {
  EXPECT_EQ(displayString(defaultZoomIn, names), "⌥1");
  EXPECT_EQ(displayString({.keyCode = 0,
                           .modifierFlags =
                               commandModifier | shiftModifier | optionModifier | controlModifier},
                          names),
            "⌃⌥⇧⌘A");
  EXPECT_EQ(displayString({.keyCode = 109, .modifierFlags = commandModifier}, names), "⌘F10");
}

TEST(Shortcut, aHotKeyNeedsAModifierWithWhichNobodyTypes) {
  for (const auto modifier : {commandModifier, optionModifier, controlModifier}) {
    EXPECT_TRUE(isHotKey({.keyCode = 0, .modifierFlags = modifier}));
    EXPECT_TRUE(isHotKey({.keyCode = 0, .modifierFlags = modifier | shiftModifier}));
  }
  EXPECT_FALSE(isHotKey({.keyCode = 0, .modifierFlags = shiftModifier}));
  EXPECT_FALSE(isHotKey({.keyCode = 0, .modifierFlags = 0}));
}

TEST(Shortcut, isStoredAsAnObjectOfTwoNumbers) {
  EXPECT_EQ(encodeShortcut(defaultZoomIn), R"({"keyCode":18,"modifierFlags":524288})");
  EXPECT_EQ(decodeShortcut(encodeShortcut(defaultZoomOut)), defaultZoomOut);
}

TEST(Shortcut, bitsOfTheDeviceAreDroppedOnLoading) {
  EXPECT_EQ(decodeShortcut(R"({"keyCode":18,"modifierFlags":524577})"), defaultZoomIn);
}

TEST(Shortcut, whatIsNoShortcutIsNone) {
  for (const auto* text :
       {"", "null", "[]", "18", "{}", R"({"keyCode":18})", R"({"modifierFlags":524288})",
        R"({"keyCode":"18","modifierFlags":524288})", R"({"keyCode":65536,"modifierFlags":524288})",
        R"({"keyCode":-1,"modifierFlags":524288})", R"({"keyCode":18,"modifierFlags":-1})",
        R"({"keyCode":18.5,"modifierFlags":524288})", R"({"keyCode":18,"modifierFlags":1e300})",
        R"({"keyCode":18,"modifierFlags":524288)"}) {
    EXPECT_EQ(decodeShortcut(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace vesk::capture
