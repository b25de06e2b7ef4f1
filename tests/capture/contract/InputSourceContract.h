#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <concepts>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "capture/Clock.h"
#include "capture/InputSource.h"
#include "capture/contract/Heard.h"

// What every input source keeps to. Instantiate the suites in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(X11, InputSourceContract, X11InputRig);
namespace vesk::capture::contract {

using Button = package::RecordedEvent::Button;

/// An input source, and a user at its mouse and keyboard. One is made for each test; it throws when
/// it cannot be set up. An action returns when it has been done and need not wait until it is
/// heard.
template <typename Rig>
concept InputSourceRig =
    std::default_initializable<Rig> &&
    requires(Rig rig, ScreenPoint point, Button button, KeyCode key, ModifierFlags modifiers) {
      { rig.source() } -> std::convertible_to<InputSource&>;
      /// The pointer can be moved to all of (0, 0) to (300, 200) of the screen.
      rig.movePointer(point);
      rig.press(button);
      rig.release(button);
      rig.scrollUp();    ///< by one notch of the wheel, so that earlier text comes into view
      rig.scrollLeft();  ///< likewise, so that what lies to the left comes into view
      /// Types a key of a keyboard with the US layout, with modifiers held.
      rig.type(key, modifiers);
    };

/// A rig whose user can also type a secret.
template <typename Rig>
concept SecureInputRig = std::default_initializable<Rig> && requires(Rig rig) {
  { rig.source() } -> std::convertible_to<InputSource&>;
  rig.enterPasswordField();
  rig.leavePasswordField();
};

namespace keys {
inline constexpr KeyCode a = 0;
inline constexpr KeyCode digit1 = 18;
inline constexpr KeyCode leftArrow = 123;
}  // namespace keys

/// Of those that were heard, the ones of one type.
template <typename Event>
std::vector<Event> only(const Heard<InputEvent>& heard) {
  std::vector<Event> events;
  for (const auto& event : heard.all()) {
    if (const auto* found = std::get_if<Event>(&event)) events.push_back(*found);
  }
  return events;
}

template <InputSourceRig Rig>
class InputSourceContract : public ::testing::Test {
 protected:
  auto listen(Heard<InputEvent>& heard, bool includesKeys = true) {
    return rig_.source().listen(includesKeys, heard.adder());
  }

  void click(Button button = Button::left) {
    rig_.press(button);
    rig_.release(button);
  }

  /// Clicks, and whether that is heard: by then everything before it has been heard too.
  [[nodiscard]] bool clickIsHeard(Heard<InputEvent>& heard) {
    const auto before = heard.count();
    click();
    return heard.has(
        [](const InputEvent& event) {
          const auto* change = std::get_if<ButtonChange>(&event);
          return change != nullptr && !change->isPressed;
        },
        before);
  }

  /// The presses that are heard while `act` runs.
  template <typename Act>
  std::vector<ButtonChange> pressesDuring(Act act, std::size_t expectedChanges) {
    const auto listening = listen(heard_);
    EXPECT_TRUE(listening.has_value());
    act();
    EXPECT_TRUE(heard_.comesTo(expectedChanges));
    auto changes = only<ButtonChange>(heard_);
    std::erase_if(changes, [](const ButtonChange& change) { return !change.isPressed; });
    return changes;
  }

  Rig rig_;
  Heard<InputEvent> heard_;
};
TYPED_TEST_SUITE_P(InputSourceContract);

TYPED_TEST_P(InputSourceContract, aPressAndItsReleaseAreHeardInOrder) {
  const auto listening = this->listen(this->heard_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  for (const auto button : {Button::left, Button::right, Button::other}) this->click(button);
  ASSERT_TRUE(this->heard_.comesTo(6));
  const auto changes = only<ButtonChange>(this->heard_);
  ASSERT_EQ(changes.size(), 6U);
  for (std::size_t i = 0; i < changes.size(); ++i) EXPECT_EQ(changes[i].isPressed, i % 2 == 0);
  EXPECT_EQ(changes[0].button, Button::left);
  EXPECT_EQ(changes[1].button, Button::left);
  EXPECT_EQ(changes[2].button, Button::right);
  EXPECT_EQ(changes[3].button, Button::right);
  EXPECT_EQ(changes[4].button, Button::other);
  EXPECT_EQ(changes[5].button, Button::other);
}

TYPED_TEST_P(InputSourceContract, timesAreThoseOfTheMonotonicClock) {
  const MonotonicClock clock;
  const auto listening = this->listen(this->heard_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  const double before = clock.now();
  this->click();
  ASSERT_TRUE(this->heard_.comesTo(2));
  const double after = clock.now();
  // The device may count in milliseconds.
  for (const auto& change : only<ButtonChange>(this->heard_)) {
    EXPECT_GE(change.time, before - 0.005);
    EXPECT_LE(change.time, after + 0.005);
  }
}

TYPED_TEST_P(InputSourceContract, quickClicksAtOnePlaceAreCounted) {
  this->rig_.movePointer({.x = 100, .y = 100});
  const auto presses = this->pressesDuring(
      [this] {
        this->click();
        this->click();
        this->click();
      },
      6);
  ASSERT_EQ(presses.size(), 3U);
  EXPECT_EQ(presses[0].clickCount, 1);
  EXPECT_EQ(presses[1].clickCount, 2);
  EXPECT_EQ(presses[2].clickCount, 3);
}

TYPED_TEST_P(InputSourceContract, aClickElsewhereIsASingleOne) {
  this->rig_.movePointer({.x = 100, .y = 100});
  const auto presses = this->pressesDuring(
      [this] {
        this->click();
        this->rig_.movePointer({.x = 200, .y = 100});
        this->click();
      },
      4);
  ASSERT_EQ(presses.size(), 2U);
  EXPECT_EQ(presses[1].clickCount, 1);
}

TYPED_TEST_P(InputSourceContract, aClickOfAnotherButtonIsASingleOne) {
  const auto presses = this->pressesDuring(
      [this] {
        this->click(Button::left);
        this->click(Button::right);
      },
      4);
  ASSERT_EQ(presses.size(), 2U);
  EXPECT_EQ(presses[1].clickCount, 1);
}

TYPED_TEST_P(InputSourceContract, scrollingUpAndLeftIsPositive) {
  const auto listening = this->listen(this->heard_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  this->rig_.scrollUp();
  ASSERT_TRUE(this->heard_.comesTo(1));
  const auto up = std::get<ScrollStep>(this->heard_.all().at(0));
  EXPECT_GT(up.dy, 0);
  EXPECT_EQ(up.dx, 0);
  this->rig_.scrollLeft();
  ASSERT_TRUE(this->heard_.comesTo(2));
  const auto left = std::get<ScrollStep>(this->heard_.all().at(1));
  EXPECT_GT(left.dx, 0);
  EXPECT_EQ(left.dy, 0);
}

TYPED_TEST_P(InputSourceContract, aNotchOfTheWheelIsOneScrollAndNoPress) {
  const auto listening = this->listen(this->heard_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  this->rig_.scrollUp();
  ASSERT_TRUE(this->clickIsHeard(this->heard_));
  EXPECT_EQ(only<ScrollStep>(this->heard_).size(), 1U);
  EXPECT_EQ(only<ButtonChange>(this->heard_).size(), 2U);
}

TYPED_TEST_P(InputSourceContract, aKeyTellsItsCodeModifiersAndCharacters) {
  constexpr ModifierFlags all = shiftModifier | hotKeyModifiers;
  const auto listening = this->listen(this->heard_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  this->rig_.type(keys::a, 0);
  this->rig_.type(keys::a, shiftModifier);
  this->rig_.type(keys::digit1, optionModifier | commandModifier);
  const auto typed = [&] {
    auto presses = only<KeyPress>(this->heard_);
    // The modifiers are keys themselves and may be told as such.
    std::erase_if(presses, [](const KeyPress& key) { return key.characters.empty(); });
    return presses;
  };
  ASSERT_TRUE(comesTrue([&] { return typed().size() >= 3; }));
  const auto presses = typed();
  ASSERT_EQ(presses.size(), 3U);
  EXPECT_EQ(presses[0].keyCode, keys::a);
  EXPECT_EQ(presses[0].modifierFlags & all, 0U);
  EXPECT_EQ(presses[0].characters, "a");
  EXPECT_EQ(presses[1].keyCode, keys::a);
  EXPECT_EQ(presses[1].modifierFlags & all, shiftModifier);
  EXPECT_EQ(presses[1].characters, "A");
  EXPECT_EQ(presses[2].keyCode, keys::digit1);
  EXPECT_EQ(presses[2].modifierFlags & all, optionModifier | commandModifier);
  EXPECT_EQ(presses[2].characters, "1");
}

TYPED_TEST_P(InputSourceContract, anArrowKeyIsHeard) {
  const auto listening = this->listen(this->heard_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  this->rig_.type(keys::leftArrow, 0);
  EXPECT_TRUE(this->heard_.has([](const InputEvent& event) {
    const auto* key = std::get_if<KeyPress>(&event);
    return key != nullptr && key->keyCode == keys::leftArrow;
  }));
}

TYPED_TEST_P(InputSourceContract, keysAreHeardByThoseOnlyWhoAskForThem) {
  Heard<InputEvent> mouse;
  const auto withKeys = this->listen(this->heard_);
  const auto withoutKeys = this->listen(mouse, false);
  ASSERT_TRUE(withKeys && withoutKeys);
  this->rig_.type(keys::a, 0);
  ASSERT_TRUE(comesTrue([&] { return !only<KeyPress>(this->heard_).empty(); }));
  ASSERT_TRUE(this->clickIsHeard(mouse));
  EXPECT_TRUE(only<KeyPress>(mouse).empty());
}

TYPED_TEST_P(InputSourceContract, thePointerIsWhereItWasMovedAndThatIsNoEvent) {
  const auto listening = this->listen(this->heard_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  for (const ScreenPoint point : {ScreenPoint{.x = 10, .y = 20}, ScreenPoint{.x = 250, .y = 150}}) {
    this->rig_.movePointer(point);
    EXPECT_TRUE(comesTrue([&] { return this->rig_.source().pointerPosition() == point; }));
  }
  ASSERT_TRUE(this->clickIsHeard(this->heard_));
  EXPECT_EQ(this->heard_.count(), 2U);
}

TYPED_TEST_P(InputSourceContract, whoHasEndedListeningHearsNothing) {
  Heard<InputEvent> others;
  const auto other = this->listen(others);
  auto listening = this->listen(this->heard_);
  ASSERT_TRUE(other && listening);
  ASSERT_TRUE(this->clickIsHeard(this->heard_));
  listening->reset();
  const auto count = this->heard_.count();
  ASSERT_TRUE(others.comesTo(2));
  ASSERT_TRUE(this->clickIsHeard(others));
  EXPECT_EQ(this->heard_.count(), count);
}

REGISTER_TYPED_TEST_SUITE_P(InputSourceContract, aPressAndItsReleaseAreHeardInOrder,
                            timesAreThoseOfTheMonotonicClock, quickClicksAtOnePlaceAreCounted,
                            aClickElsewhereIsASingleOne, aClickOfAnotherButtonIsASingleOne,
                            scrollingUpAndLeftIsPositive, aNotchOfTheWheelIsOneScrollAndNoPress,
                            aKeyTellsItsCodeModifiersAndCharacters, anArrowKeyIsHeard,
                            keysAreHeardByThoseOnlyWhoAskForThem,
                            thePointerIsWhereItWasMovedAndThatIsNoEvent,
                            whoHasEndedListeningHearsNothing);

template <SecureInputRig Rig>
class SecureInputContract : public ::testing::Test {
 protected:
  Rig rig_;
};
TYPED_TEST_SUITE_P(SecureInputContract);

TYPED_TEST_P(SecureInputContract, inputIsSecureInAPasswordFieldOnly) {
  auto& rig = this->rig_;
  EXPECT_FALSE(rig.source().isSecureInput());
  rig.enterPasswordField();
  EXPECT_TRUE(comesTrue([&] { return rig.source().isSecureInput(); }));
  rig.leavePasswordField();
  EXPECT_TRUE(comesTrue([&] { return !rig.source().isSecureInput(); }));
}

REGISTER_TYPED_TEST_SUITE_P(SecureInputContract, inputIsSecureInAPasswordFieldOnly);

}  // namespace vesk::capture::contract
