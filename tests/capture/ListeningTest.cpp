#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include "capture/Listening.h"
#include "capture/contract/Heard.h"

namespace vesk::capture {
namespace {

TEST(Listeners, allWhoListenAreCalledInTheOrderInWhichTheyCame) {
  Listeners<int> listeners;
  std::vector<int> heard;
  const auto first = listeners.add([&](int value) { heard.push_back(value); });
  const auto second = listeners.add([&](int value) { heard.push_back(10 * value); });
  listeners.call(1);
  listeners.call(2);
  EXPECT_EQ(heard, (std::vector{1, 10, 2, 20}));
}

TEST(Listeners, whoeverEndsListeningIsNotCalled) {
  Listeners<int> listeners;
  std::vector<int> heard;
  auto first = listeners.add([&](int value) { heard.push_back(value); });
  const auto second = listeners.add([&](int value) { heard.push_back(10 * value); });
  first.reset();
  listeners.call(1);
  EXPECT_EQ(heard, std::vector{10});
}

TEST(Listeners, theyMayGoBeforeThoseWhoListen) {
  std::optional<Listeners<>> listeners{std::in_place};
  int calls = 0;
  auto listening = listeners->add([&] { ++calls; });
  listeners->call();
  listeners.reset();
  listening.reset();
  EXPECT_EQ(calls, 1);
}

TEST(Listeners, theEndOfListeningWaitsForACallbackThatRuns) {
  Listeners<> listeners;
  std::atomic<bool> hasBegun = false;
  std::atomic<bool> mayEnd = false;
  std::atomic<bool> hasEnded = false;
  auto listening = listeners.add([&] {
    hasBegun = true;
    while (!mayEnd) std::this_thread::yield();
    hasEnded = true;
  });
  const std::jthread caller{[&] { listeners.call(); }};
  ASSERT_TRUE(contract::comesTrue([&] { return hasBegun.load(); }));
  const std::jthread releaser{[&] {
    std::this_thread::sleep_for(std::chrono::milliseconds{20});
    mayEnd = true;
  }};
  listening.reset();
  EXPECT_TRUE(hasEnded);
}

}  // namespace
}  // namespace vesk::capture
