#include <gtest/gtest.h>

#include "capture/Shortcut.h"
#include "capture/x11/CurrentLayout.h"
#include "capture/x11/TestDisplay.h"

namespace vesk::capture::x11::test {
namespace {

class CurrentLayout : public testing::Test {
 protected:
  TestDisplay display;
  KeyNames::LayoutLookup layout = currentLayout(display.name()).value();
};

TEST_F(CurrentLayout, tellsWhatAKeyTypesAlone) {
  EXPECT_EQ(layout(0), "a");
  EXPECT_EQ(layout(18), "1");
  EXPECT_EQ(layout(83), "1");  // of the keypad
  EXPECT_EQ(layout(41), ";");
}

TEST_F(CurrentLayout, isEmptyForKeysThatTypeNothing) {
  for (const KeyCode key : {36, 51, 53, 56, 76, 114, 117, 122, 123, 52, 0xFFFE}) {
    EXPECT_EQ(layout(key), "") << key;
  }
}

TEST_F(CurrentLayout, followsTheUser) {
  ASSERT_EQ(display.run({"setxkbmap", "de"}), 0);
  EXPECT_EQ(layout(16), "z");
  EXPECT_EQ(layout(41), "ö");
  ASSERT_EQ(display.run({"setxkbmap", "us"}), 0);
  EXPECT_EQ(layout(16), "y");
}

TEST_F(CurrentLayout, givesKeysTheirNames) {
  const KeyNames names{layout};
  EXPECT_EQ(displayString(defaultZoomIn, names), "⌥1");
  EXPECT_EQ(names.name(0), "A");
  EXPECT_EQ(names.name(114), "键114");
}

TEST_F(CurrentLayout, staysAsItWasWhenTheServerDies) {
  display.kill();
  EXPECT_EQ(layout(0), "a");
}

TEST(CurrentLayoutWithoutAServer, isAnError) {
  EXPECT_FALSE(currentLayout(":987"));
}

}  // namespace
}  // namespace vesk::capture::x11::test
