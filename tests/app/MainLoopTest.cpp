#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "app/MainLoop.h"

namespace vesk::app {
namespace {

using namespace std::chrono_literals;

TEST(MainLoop, runsWhatIsPostedInItsOrderOnItsThread) {
  MainLoop loop;
  std::string order;
  const auto here = std::this_thread::get_id();
  std::jthread{[post = loop.poster(), &order, here] {
    post([&order, here] { order += std::this_thread::get_id() == here ? 'a' : '?'; });
    post([&order] { order += 'b'; });
  }};
  EXPECT_TRUE(loop.runUntil([&] { return order.size() == 2; }, 5s));
  EXPECT_EQ(order, "ab");
}

TEST(MainLoop, aConditionThatNeverHoldsEndsWithTheLimit) {
  MainLoop loop;
  EXPECT_FALSE(loop.runUntil([] { return false; }, 1ms));
}

TEST(MainLoop, aConditionThatHoldsAlreadyNeedsNoTime) {
  MainLoop loop;
  EXPECT_TRUE(loop.runUntil([] { return true; }, 0s));
}

TEST(MainLoop, ticksUntilTheTickerGoes) {
  MainLoop loop;
  int ticks = 0;
  auto ticker = loop.tick(1ms, [&] { ++ticks; });
  EXPECT_TRUE(loop.runUntil([&] { return ticks == 3; }, 5s));
  ticker.reset();
  loop.runFor(1ms);
  const int before = ticks;
  loop.runFor(20ms);
  EXPECT_EQ(ticks, before);
}

TEST(MainLoop, posterAndTickerMayOutliveTheLoop) {
  std::function<void(MainLoop::Task)> post;
  std::unique_ptr<capture::Listening> ticker;
  {
    const MainLoop loop;
    post = loop.poster();
    ticker = loop.tick(1ms, [] {});
  }
  post([] { FAIL(); });
  std::this_thread::sleep_for(5ms);
}

}  // namespace
}  // namespace vesk::app
