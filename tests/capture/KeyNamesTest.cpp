#include <gtest/gtest.h>

#include <map>

#include "capture/KeyCombo.h"
#include "capture/KeyNames.h"
#include "capture/UpperCase.h"

namespace vesk::capture {
namespace {

const std::map<KeyCode, std::string> fixedNames{
    {36, "⏎"},    {48, "⇥"},    {49, "空格"}, {51, "⌫"},   {53, "esc"},  {123, "←"},   {124, "→"},
    {126, "↑"},   {125, "↓"},   {122, "F1"},  {120, "F2"}, {99, "F3"},   {118, "F4"},  {96, "F5"},
    {97, "F6"},   {98, "F7"},   {100, "F8"},  {101, "F9"}, {109, "F10"}, {103, "F11"}, {111, "F12"},
    {105, "F13"}, {107, "F14"}, {113, "F15"}, {50, "`"},   {27, "-"},    {24, "="},    {33, "["},
    {30, "]"},    {41, ";"},    {39, "'"},    {43, ","},   {47, "."},    {44, "/"},    {42, "\\"}};

std::string noLayout(KeyCode /*keyCode*/) {
  return "";
}

KeyPress press(KeyCode keyCode, ModifierFlags modifiers, std::string characters) {
  return {.keyCode = keyCode, .modifierFlags = modifiers, .characters = std::move(characters)};
}

TEST(KeyNames, thirtyFiveKeysHaveAFixedNameOnWhateverLayout) {
  ASSERT_EQ(fixedNames.size(), 35U);
  const KeyNames names{[](KeyCode) { return "x"; }};
  for (const auto& [keyCode, name] : fixedNames) EXPECT_EQ(names.name(keyCode), name);
}

TEST(KeyNames, noOtherKeyHasAFixedName) {
  const KeyNames names{noLayout};
  for (KeyCode keyCode = 0; keyCode < 256; ++keyCode) {
    if (fixedNames.contains(keyCode)) continue;
    EXPECT_EQ(names.name(keyCode), "键" + std::to_string(keyCode));
  }
}

TEST(KeyNames, otherKeysAreNamedByWhatTheyType) {
  const KeyNames names{[](KeyCode keyCode) { return keyCode == 0 ? "q" : "ö"; }};
  EXPECT_EQ(names.name(0), "Q");
  EXPECT_EQ(names.name(1), "Ö");
}

TEST(KeyNames, aKeyThatTypesNothingIsNamedByItsNumber) {
  EXPECT_EQ(KeyNames{noLayout}.name(200), "键200");
}

TEST(KeyCombo, modifiersStandInAFixedOrderBeforeTheKey) {
  EXPECT_EQ(keyCombo(press(1, shiftModifier | commandModifier, "S")), "⇧⌘S");
  EXPECT_EQ(
      keyCombo(press(1, commandModifier | shiftModifier | optionModifier | controlModifier, "s")),
      "⌃⌥⇧⌘S");
}

TEST(KeyCombo, nineKeysAreNamed) {
  for (const KeyCode keyCode : {36, 48, 49, 51, 53, 123, 124, 126, 125}) {
    EXPECT_EQ(keyCombo(press(keyCode, 0, "\x1b")), fixedNames.at(keyCode));
    EXPECT_EQ(comboKeyName(keyCode), fixedNames.at(keyCode));
  }
}

TEST(KeyCombo, aNamedKeyNeedsToTypeNothing) {
  EXPECT_EQ(keyCombo(press(123, optionModifier, "")), "⌥←");
}

TEST(KeyCombo, otherKeysWithAFixedNameAreWrittenAsTheyType) {
  EXPECT_EQ(comboKeyName(42), std::nullopt);
  EXPECT_EQ(keyCombo(press(42, 0, "|")), "|");
}

TEST(KeyCombo, aKeyThatTypesNothingIsItsModifiersAlone) {
  EXPECT_EQ(keyCombo(press(122, controlModifier, "")), "⌃");
  EXPECT_EQ(keyCombo(press(122, 0, "")), "");
}

TEST(KeyCombo, bitsOfNoModifierMakeNoDifference) {
  EXPECT_EQ(keyCombo(press(0, 0x10104 | commandModifier, "a")), "⌘A");
}

TEST(UpperCase, lettersOfWhateverScriptAreRaised) {
  EXPECT_EQ(upperCased("aé я ß 中1"), "AÉ Я SS 中1");
}

TEST(UpperCase, bytesThatAreNoTextStay) {
  const std::string broken{"a\xFF\xC3", 3};
  EXPECT_EQ(upperCased(broken), (std::string{"A\xFF\xC3", 3}));
  const std::string withNull{"a\0b", 3};
  EXPECT_EQ(upperCased(withNull), (std::string{"A\0B", 3}));
}

}  // namespace
}  // namespace vesk::capture
