#include <gtest/gtest.h>

#include <set>

#include "capture/x11/KeyTable.h"

namespace vesk::capture::x11 {
namespace {

TEST(KeyTable, knowsTheKeysOfTheDefaultShortcutsAndOfTheKeyNames) {
  EXPECT_EQ(xKeyCodeOf(18), 10);    // 1
  EXPECT_EQ(xKeyCodeOf(19), 11);    // 2
  EXPECT_EQ(xKeyCodeOf(36), 36);    // Return
  EXPECT_EQ(xKeyCodeOf(49), 65);    // Space
  EXPECT_EQ(xKeyCodeOf(0), 38);     // A
  EXPECT_EQ(xKeyCodeOf(122), 67);   // F1
  EXPECT_EQ(xKeyCodeOf(123), 113);  // ←
  EXPECT_EQ(keyCodeOf(9), 53);      // Esc
  EXPECT_EQ(keyCodeOf(22), 51);     // Backspace
  EXPECT_EQ(keyCodeOf(133), 55);    // left Super
}

TEST(KeyTable, isTheSameBothWays) {
  int count = 0;
  for (int keyCode = 0; keyCode <= 0xFFFF; ++keyCode) {
    const auto key = xKeyCodeOf(static_cast<KeyCode>(keyCode));
    if (!key) continue;
    ++count;
    EXPECT_EQ(keyCodeOf(*key), keyCode);
  }
  int xCount = 0;
  for (int key = 0; key <= 0xFF; ++key) xCount += keyCodeOf(static_cast<XKeyCode>(key)) ? 1 : 0;
  EXPECT_EQ(count, xCount);
}

TEST(KeyTable, hasEveryKeyOfAKeyboardWith105) {
  // The kernel's numbers, which stand in rows and blocks: the main block with the keypad up to F10
  // and the key that only some keyboards have, F11 and F12, and the rest.
  std::set<int> keys{86, 87, 88, 119};
  for (int key = 1; key <= 83; ++key) keys.insert(key);
  for (int key = 96; key <= 111; ++key) keys.insert(key);
  for (const int key : {125, 126, 127}) keys.insert(key);
  keys.erase(84);
  keys.erase(101);  // the kernel's line feed, which no such keyboard has
  EXPECT_EQ(keys.size(), 105U);
  for (const int key : keys) {
    EXPECT_TRUE(keyCodeOf(static_cast<XKeyCode>(key + 8))) << "kernel's key " << key;
  }
}

TEST(KeyTable, hasNoOtherKeys) {
  EXPECT_EQ(xKeyCodeOf(0xFFFE), std::nullopt);
  EXPECT_EQ(xKeyCodeOf(52), std::nullopt);
  EXPECT_EQ(keyCodeOf(0), std::nullopt);
  EXPECT_EQ(keyCodeOf(255), std::nullopt);
}

TEST(KeyTable, tellsModifiersFromOtherKeys) {
  for (const XKeyCode key : {50, 62, 37, 105, 64, 108, 133, 134, 66}) {
    EXPECT_TRUE(isModifierKey(*keyCodeOf(key))) << int{key};
  }
  for (const XKeyCode key : {9, 10, 36, 38, 65, 77, 78, 113}) {
    EXPECT_FALSE(isModifierKey(*keyCodeOf(key))) << int{key};
  }
}

}  // namespace
}  // namespace vesk::capture::x11
