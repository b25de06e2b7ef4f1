#include <gtest/gtest.h>

#include "capture/x11/SecureFocus.h"

namespace vesk::capture::x11 {
namespace {

const Accessible password{.application = ":1.5", .path = "/entry/1"};
const Accessible name{.application = ":1.5", .path = "/entry/2"};
const Accessible dialog{.application = ":1.5", .path = "/window/1"};
const Accessible otherDialog{.application = ":1.5", .path = "/window/2"};
const Accessible otherWindow{.application = ":1.7", .path = "/window/1"};

class SecureFocusTest : public testing::Test {
 protected:
  void enterPassword() { focus.focused(password, true); }
  SecureFocus focus;
};

TEST_F(SecureFocusTest, isOffAtFirstAndInOtherFields) {
  EXPECT_FALSE(focus.isInPasswordField());
  focus.focused(name, false);
  EXPECT_FALSE(focus.isInPasswordField());
}

TEST_F(SecureFocusTest, isOnFromAPasswordFieldToTheNextField) {
  enterPassword();
  EXPECT_TRUE(focus.isInPasswordField());
  focus.focused(name, false);
  EXPECT_FALSE(focus.isInPasswordField());
}

TEST_F(SecureFocusTest, aFieldLosesTheFocusByItsOwnWordAlone) {
  enterPassword();
  focus.unfocused(name);
  EXPECT_TRUE(focus.isInPasswordField());
  focus.unfocused(password);
  EXPECT_FALSE(focus.isInPasswordField());
}

TEST_F(SecureFocusTest, isOffWhileTheUserIsInAnotherWindow) {
  enterPassword();
  focus.windowDeactivated(dialog);
  EXPECT_FALSE(focus.isInPasswordField());
  focus.windowActivated(otherWindow);
  focus.windowActivated(otherDialog);
  EXPECT_FALSE(focus.isInPasswordField());
  focus.windowActivated(dialog);
  EXPECT_TRUE(focus.isInPasswordField());
}

TEST_F(SecureFocusTest, theWindowOfAnotherApplicationMayBeLeft) {
  enterPassword();
  focus.windowDeactivated(otherWindow);
  EXPECT_TRUE(focus.isInPasswordField());
}

TEST_F(SecureFocusTest, focusInAnotherWindowForgetsTheFieldThatWasLeft) {
  enterPassword();
  focus.windowDeactivated(dialog);
  focus.focused(name, false);
  focus.windowActivated(dialog);
  EXPECT_FALSE(focus.isInPasswordField());
}

TEST_F(SecureFocusTest, isOffWhenTheApplicationEnds) {
  enterPassword();
  focus.applicationEnded(":1.7");
  EXPECT_TRUE(focus.isInPasswordField());
  focus.applicationEnded(":1.5");
  EXPECT_FALSE(focus.isInPasswordField());
  EXPECT_FALSE(focus.field());
}

}  // namespace
}  // namespace vesk::capture::x11
