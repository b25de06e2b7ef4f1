#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <string_view>

#include "capture/x11/TestDisplay.h"

namespace vesk::capture::x11::test {
namespace {

TEST(TestDisplay, hasTheSizeThatWasAskedForAndXTEST) {
  const TestDisplay display{{.width = 321, .height = 123}};
  const Connection& connection = display.connection();
  EXPECT_EQ(connection.screen().width_in_pixels, 321);
  EXPECT_EQ(connection.screen().height_in_pixels, 123);
  constexpr std::string_view name = "XTEST";
  const auto reply = owned(xcb_query_extension_reply(
      connection.get(), xcb_query_extension(connection.get(), name.size(), name.data()), nullptr));
  ASSERT_TRUE(reply);
  EXPECT_TRUE(reply->present);
}

TEST(TestDisplay, twoAreApart) {
  const TestDisplay one;
  const TestDisplay other;
  EXPECT_NE(one.name(), other.name());
}

TEST(TestDisplay, aKilledServerMakesRequestsFailAndNothingMore) {
  TestDisplay display;
  display.kill();
  display.sync();
  EXPECT_FALSE(display.connection().isAlive());
  EXPECT_EQ(display.connection().atom("ANY"), 0U);
}

TEST(TestDisplay, noOtherTakesTheNameOfAKilledOne) {
  TestDisplay display;
  display.kill();
  EXPECT_NE(TestDisplay().name(), display.name());
}

TEST(TestDisplay, aWindowManagerRunsWhereOneIsWanted) {
  const TestDisplay display{{.hasWindowManager = true}};
  const Connection& connection = display.connection();
  const auto check =
      connection.number(connection.root(), connection.atom("_NET_SUPPORTING_WM_CHECK"));
  ASSERT_TRUE(check);
  EXPECT_EQ(connection.property(*check, connection.atom("_NET_WM_NAME")), "Openbox");
}

}  // namespace
}  // namespace vesk::capture::x11::test
