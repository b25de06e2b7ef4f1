#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "media/BoundedQueue.h"

namespace vesk::media {
namespace {

using namespace std::chrono_literals;

TEST(BoundedQueue, valuesComeOutInTheOrderTheyWentIn) {
  BoundedQueue<int> queue(3);
  for (const int value : {1, 2, 3}) EXPECT_TRUE(queue.push(value));
  for (const int value : {1, 2, 3}) EXPECT_EQ(queue.pop(), value);
}

TEST(BoundedQueue, aFullQueueMakesTheGiverWait) {
  BoundedQueue<int> queue(1);
  ASSERT_TRUE(queue.push(1));
  std::atomic<bool> pushed = false;
  const std::jthread giver([&] { pushed = queue.push(2); });
  std::this_thread::sleep_for(30ms);
  EXPECT_FALSE(pushed);
  EXPECT_EQ(queue.pop(), 1);
  EXPECT_EQ(queue.pop(), 2);
}

TEST(BoundedQueue, anEmptyQueueMakesTheTakerWait) {
  BoundedQueue<int> queue(1);
  std::atomic<int> taken = 0;
  {
    const std::jthread taker([&] { taken = queue.pop().value_or(-1); });
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(taken, 0);
    ASSERT_TRUE(queue.push(7));
  }
  EXPECT_EQ(taken, 7);
}

TEST(BoundedQueue, closingLetsNothingMoreIn) {
  BoundedQueue<int> queue(2);
  queue.close();
  EXPECT_FALSE(queue.push(1));
  EXPECT_EQ(queue.pop(), std::nullopt);
}

TEST(BoundedQueue, whatIsInWhenItClosesCanStillBeTaken) {
  BoundedQueue<int> queue(2);
  ASSERT_TRUE(queue.push(1));
  ASSERT_TRUE(queue.push(2));
  queue.close();
  EXPECT_EQ(queue.pop(), 1);
  EXPECT_EQ(queue.pop(), 2);
  EXPECT_EQ(queue.pop(), std::nullopt);
  EXPECT_EQ(queue.pop(), std::nullopt);
}

TEST(BoundedQueue, closingWakesAGiverWhoWaits) {
  BoundedQueue<int> queue(1);
  ASSERT_TRUE(queue.push(1));
  std::atomic<bool> accepted = true;
  {
    const std::jthread giver([&] { accepted = queue.push(2); });
    std::this_thread::sleep_for(10ms);
    queue.close();
  }
  EXPECT_FALSE(accepted);
  EXPECT_EQ(queue.pop(), 1);
  EXPECT_EQ(queue.pop(), std::nullopt);
}

TEST(BoundedQueue, closingWakesATakerWhoWaits) {
  BoundedQueue<int> queue(1);
  std::atomic<bool> gotNothing = false;
  {
    const std::jthread taker([&] { gotNothing = !queue.pop().has_value(); });
    std::this_thread::sleep_for(10ms);
    queue.close();
  }
  EXPECT_TRUE(gotNothing);
}

TEST(BoundedQueue, valuesMayBeMovableOnly) {
  BoundedQueue<std::unique_ptr<int>> queue(1);
  ASSERT_TRUE(queue.push(std::make_unique<int>(5)));
  const auto value = queue.pop();
  ASSERT_TRUE(value && *value);
  EXPECT_EQ(**value, 5);
}

TEST(BoundedQueue, nothingIsLostOrReorderedBetweenTwoThreads) {
  constexpr int count = 20'000;
  BoundedQueue<int> queue(3);
  const std::jthread giver([&] {
    for (int value = 0; value < count; ++value) queue.push(value);
    queue.close();
  });
  std::vector<int> taken;
  while (const auto value = queue.pop()) taken.push_back(*value);
  std::vector<int> given(count);
  std::iota(given.begin(), given.end(), 0);
  EXPECT_EQ(taken, given);
}

}  // namespace
}  // namespace vesk::media
