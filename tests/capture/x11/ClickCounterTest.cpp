#include <gtest/gtest.h>

#include "capture/x11/ClickCounter.h"

namespace vesk::capture::x11 {
namespace {

using Button = ClickCounter::Button;

constexpr ScreenPoint here{.x = 100, .y = 100};
constexpr DoubleClick limits{.interval = 0.4, .distance = 5};

TEST(ClickCounter, countsQuickPressesAtOnePlace) {
  ClickCounter counter{limits};
  EXPECT_EQ(counter.press(Button::left, 1.0, here), 1);
  EXPECT_EQ(counter.press(Button::left, 1.25, here), 2);
  EXPECT_EQ(counter.press(Button::left, 1.5, here), 3);
}

TEST(ClickCounter, aPressThatComesLateIsASingleOne) {
  ClickCounter counter{limits};
  counter.press(Button::left, 1.0, here);
  EXPECT_EQ(counter.press(Button::left, 1.5, here), 1);
  EXPECT_EQ(counter.press(Button::left, 1.75, here), 2);
}

TEST(ClickCounter, theIntervalAndTheDistanceThemselvesCount) {
  ClickCounter counter{{.interval = 0.5, .distance = 5}};
  counter.press(Button::left, 1.0, here);
  EXPECT_EQ(counter.press(Button::left, 1.5, {.x = 105, .y = 95}), 2);
  EXPECT_EQ(counter.press(Button::left, 2.0, {.x = 105, .y = 101}), 1);
}

TEST(ClickCounter, aPressElsewhereIsASingleOne) {
  ClickCounter counter{limits};
  counter.press(Button::left, 1.0, here);
  EXPECT_EQ(counter.press(Button::left, 1.1, {.x = 106, .y = 100}), 1);
}

TEST(ClickCounter, aPressOfAnotherButtonIsASingleOneAndBreaksTheRow) {
  ClickCounter counter{limits};
  counter.press(Button::left, 1.0, here);
  EXPECT_EQ(counter.press(Button::right, 1.1, here), 1);
  EXPECT_EQ(counter.press(Button::left, 1.2, here), 1);
}

}  // namespace
}  // namespace vesk::capture::x11
