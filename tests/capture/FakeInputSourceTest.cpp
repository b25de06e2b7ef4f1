#include <gtest/gtest.h>

#include <optional>

#include "capture/Clock.h"
#include "capture/contract/InputSourceContract.h"
#include "capture/fake/FakeInputSource.h"

namespace vesk::capture {
namespace {

using contract::Button;
using fake::FakeInputSource;

class FakeInputRig {
 public:
  InputSource& source() { return source_; }
  void movePointer(ScreenPoint point) {
    source_.setPointer(point);
    lastPressed_.reset();
  }
  void press(Button button) {
    clickCount_ = lastPressed_ == button ? clickCount_ + 1 : 1;
    lastPressed_ = button;
    source_.send(ButtonChange{
        .time = clock_.now(), .button = button, .isPressed = true, .clickCount = clickCount_});
  }
  void release(Button button) {
    source_.send(ButtonChange{.time = clock_.now(), .button = button});
  }
  void scrollUp() { source_.send(ScrollStep{.time = clock_.now(), .dy = 1}); }
  void scrollLeft() { source_.send(ScrollStep{.time = clock_.now(), .dx = 1}); }
  void type(KeyCode keyCode, ModifierFlags modifiers) {
    source_.send(KeyPress{.time = clock_.now(),
                          .keyCode = keyCode,
                          .modifierFlags = modifiers,
                          .characters = charactersOf(keyCode, (modifiers & shiftModifier) != 0)});
  }
  void enterPasswordField() { source_.setSecureInput(true); }
  void leavePasswordField() { source_.setSecureInput(false); }

 private:
  static std::string charactersOf(KeyCode keyCode, bool isShifted) {
    if (keyCode == contract::keys::a) return isShifted ? "A" : "a";
    if (keyCode == contract::keys::digit1) return isShifted ? "!" : "1";
    return "";
  }

  FakeInputSource source_;
  MonotonicClock clock_;
  std::optional<Button> lastPressed_;
  std::int64_t clickCount_ = 0;
};

TEST(FakeInputSource, aPointerCanBeNowhere) {
  FakeInputSource source;
  source.setPointer(std::nullopt);
  EXPECT_EQ(source.pointerPosition(), std::nullopt);
}

TEST(FakeInputSource, nobodyCanListenAfterAFailure) {
  FakeInputSource source;
  source.fail({.message = "没有输入设备"});
  const auto listening = source.listen(true, [](const InputEvent&) {});
  ASSERT_FALSE(listening.has_value());
  EXPECT_EQ(listening.error().message, "没有输入设备");
}

}  // namespace

namespace contract {
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, InputSourceContract, FakeInputRig);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, SecureInputContract, FakeInputRig);
}  // namespace contract

}  // namespace vesk::capture
