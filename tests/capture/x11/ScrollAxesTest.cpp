#include <gtest/gtest.h>

#include <array>

#include "capture/x11/ScrollAxes.h"

namespace vesk::capture::x11 {
namespace {

constexpr ScrollAxis vertical{.valuator = 3, .increment = 15};
constexpr ScrollAxis horizontal{.valuator = 2, .isHorizontal = true, .increment = 15};
constexpr std::array wheel{horizontal, vertical};

std::optional<ScrollSteps> steps(ScrollAxes& axes, int valuator, double value) {
  const std::array values{ValuatorValue{.valuator = valuator, .value = value}};
  return axes.steps(values);
}

TEST(ScrollAxes, aRelativeAxisTellsPartsOfSteps) {
  ScrollAxes axes{wheel};
  EXPECT_EQ(steps(axes, 3, 15), (ScrollSteps{.down = 1}));
  EXPECT_EQ(steps(axes, 3, -3.75), (ScrollSteps{.down = -0.25}));
  EXPECT_EQ(steps(axes, 2, 30), (ScrollSteps{.right = 2}));
}

TEST(ScrollAxes, bothAxesMayComeInOneEvent) {
  ScrollAxes axes{wheel};
  constexpr std::array values{ValuatorValue{.valuator = 2, .value = -15},
                              ValuatorValue{.valuator = 3, .value = 7.5}};
  EXPECT_EQ(axes.steps(values), (ScrollSteps{.right = -1, .down = 0.5}));
}

TEST(ScrollAxes, aMovementOfThePointerIsNoScroll) {
  ScrollAxes axes{wheel};
  constexpr std::array values{ValuatorValue{.valuator = 0, .value = 12},
                              ValuatorValue{.valuator = 1, .value = -4}};
  EXPECT_EQ(axes.steps(values), std::nullopt);
  EXPECT_EQ(axes.steps({}), std::nullopt);
  EXPECT_EQ(steps(axes, 3, 0), std::nullopt);
}

TEST(ScrollAxes, anAxisThatRunsBackTurnsTheStepsRound) {
  constexpr std::array back{ScrollAxis{.valuator = 3, .increment = -1}};
  ScrollAxes axes{back};
  EXPECT_EQ(steps(axes, 3, -2), (ScrollSteps{.down = 2}));
}

TEST(ScrollAxes, anAbsoluteAxisTellsTheDifferenceFromBefore) {
  constexpr std::array absolute{ScrollAxis{.valuator = 3, .isAbsolute = true, .increment = 10}};
  ScrollAxes axes{absolute};
  EXPECT_EQ(steps(axes, 3, 1000), std::nullopt);
  EXPECT_EQ(steps(axes, 3, 1020), (ScrollSteps{.down = 2}));
  EXPECT_EQ(steps(axes, 3, 1020), std::nullopt);
  EXPECT_EQ(steps(axes, 3, 1015), (ScrollSteps{.down = -0.5}));
}

TEST(ScrollAxes, anAxisWithoutAnIncrementIsNone) {
  constexpr std::array none{ScrollAxis{.valuator = 3, .increment = 0}};
  ScrollAxes axes{none};
  EXPECT_TRUE(axes.isEmpty());
  EXPECT_EQ(steps(axes, 3, 15), std::nullopt);
}

TEST(ScrollAxes, buttonsFourToSevenAreTheWheel) {
  EXPECT_EQ(stepsOfButton(4), (ScrollSteps{.down = -1}));
  EXPECT_EQ(stepsOfButton(5), (ScrollSteps{.down = 1}));
  EXPECT_EQ(stepsOfButton(6), (ScrollSteps{.right = -1}));
  EXPECT_EQ(stepsOfButton(7), (ScrollSteps{.right = 1}));
  EXPECT_EQ(stepsOfButton(1), std::nullopt);
  EXPECT_EQ(stepsOfButton(8), std::nullopt);
}

}  // namespace
}  // namespace vesk::capture::x11
