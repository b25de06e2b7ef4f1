#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <map>
#include <vector>

#include "capture/x11/RawInput.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/TestUser.h"

namespace vesk::capture::x11::test {
namespace {

class RawInputTest : public testing::Test {
 protected:
  /// What has come in by now.
  std::vector<RawInput> received() {
    owned(xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()),
                                    nullptr));
    std::vector<RawInput> received;
    while (const auto event = owned(xcb_poll_for_event(connection.get()))) {
      if (const auto input = inputs.read(Event{event.get()})) received.push_back(*input);
    }
    return received;
  }

  TestDisplay display;
  TestUser user{display.connection()};
  Connection connection = Connection::open(display.name()).value();
  RawInputs inputs = RawInputs::open(connection).value();
};

using Kind = RawInput::Kind;

TEST_F(RawInputTest, aMovementTellsItsValuesByAxis) {
  user.movePointer({.x = 100, .y = 100});
  inputs.select(false, true);
  (void)received();
  user.movePointer({.x = 130, .y = 80});
  const auto movements = received();
  ASSERT_EQ(movements.size(), 1U);
  EXPECT_EQ(movements[0].kind, Kind::motion);
  std::map<int, double> values;
  for (const auto& [valuator, value] : movements[0].values) values[valuator] = value;
  EXPECT_EQ(values, (std::map<int, double>{{0, 130}, {1, 80}}));
}

TEST_F(RawInputTest, onlyWhatWasAskedForIsTold) {
  inputs.select(false, false);
  (void)received();
  user.movePointer({.x = 130, .y = 80});
  user.typeKey(38);
  user.clickButton(2);
  const auto inputsReceived = received();
  ASSERT_EQ(inputsReceived.size(), 2U);
  EXPECT_EQ(inputsReceived[0].kind, Kind::buttonPress);
  EXPECT_EQ(inputsReceived[0].detail, 2U);
  EXPECT_EQ(inputsReceived[1].kind, Kind::buttonRelease);
}

TEST_F(RawInputTest, keysAreToldByTheirNumberOnTheServer) {
  inputs.select(true, false);
  (void)received();
  user.typeKey(38);
  const auto keys = received();
  ASSERT_EQ(keys.size(), 2U);
  EXPECT_EQ(keys[0].kind, Kind::keyPress);
  EXPECT_EQ(keys[0].detail, 38U);
  EXPECT_EQ(keys[1].kind, Kind::keyRelease);
  EXPECT_GE(keys[1].stamp, keys[0].stamp);
}

TEST_F(RawInputTest, devicesWithoutAWheelOfTheirOwnHaveNoAxes) {
  EXPECT_TRUE(inputs.scrollAxes().empty());
}

}  // namespace
}  // namespace vesk::capture::x11::test
