#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <array>
#include <map>
#include <vector>

#include "capture/x11/ModifierBits.h"

namespace vesk::capture::x11 {
namespace {

using testing::UnorderedElementsAre;

// As X11/keysymdef.h numbers them.
constexpr std::uint32_t altL = 0xFFE9;
constexpr std::uint32_t superL = 0xFFEB;
constexpr std::uint32_t numLock = 0xFF7F;
constexpr std::uint32_t scrollLock = 0xFF14;

constexpr ModifierBits usual{.option = XCB_MOD_MASK_1,
                             .command = XCB_MOD_MASK_4,
                             .numLock = XCB_MOD_MASK_2,
                             .scrollLock = XCB_MOD_MASK_5};

TEST(ModifierBits, areFoundByTheSymbolsOnTheKeys) {
  // Two keys for each of Shift, Lock, Control, Mod1 to Mod5.
  constexpr std::array<std::uint8_t, 16> keys{50, 62, 66, 0, 37, 105, 64,  204,
                                              0,  0,  77, 0, 78, 0,   133, 0};
  const std::map<std::uint8_t, std::vector<std::uint32_t>> symbols{
      {64, {0, altL}}, {77, {numLock}}, {78, {scrollLock}}, {133, {superL}}};
  const auto bits = modifierBits(keys, [&](std::uint8_t key) -> std::span<const std::uint32_t> {
    const auto found = symbols.find(key);
    if (found == symbols.end()) return {};
    return found->second;
  });
  EXPECT_EQ(bits, (ModifierBits{.option = XCB_MOD_MASK_1,
                                .command = XCB_MOD_MASK_5,
                                .numLock = XCB_MOD_MASK_3,
                                .scrollLock = XCB_MOD_MASK_4}));
}

TEST(ModifierBits, areNoneOnAKeyboardWithoutThem) {
  EXPECT_EQ(modifierBits({}, [](std::uint8_t) { return std::span<const std::uint32_t>{}; }),
            ModifierBits{});
}

TEST(ModifierBits, standForTheModifiersOfAShortcut) {
  EXPECT_EQ(usual.flagsOf(XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_1), shiftModifier | optionModifier);
  EXPECT_EQ(usual.flagsOf(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4),
            controlModifier | commandModifier);
  EXPECT_EQ(usual.flagsOf(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2), 0U);
  EXPECT_EQ(usual.bitsOf(shiftModifier | commandModifier), XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_4);
  EXPECT_EQ(usual.shortcutBits(),
            XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4);
}

TEST(ModifierBits, locksCombineInEveryWay) {
  constexpr int caps = XCB_MOD_MASK_LOCK;
  constexpr int num = XCB_MOD_MASK_2;
  constexpr int scroll = XCB_MOD_MASK_5;
  EXPECT_THAT(usual.lockCombinations(),
              UnorderedElementsAre(0, caps, num, scroll, caps | num, caps | scroll, num | scroll,
                                   caps | num | scroll));
  EXPECT_THAT(ModifierBits{}.lockCombinations(), UnorderedElementsAre(0, caps));
}

}  // namespace
}  // namespace vesk::capture::x11
