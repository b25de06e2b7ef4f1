#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "capture/SerialQueue.h"

namespace vesk::capture {
namespace {

TEST(SerialQueue, tasksRunInTheOrderInWhichTheyWerePosted) {
  std::vector<int> ran;
  {
    SerialQueue queue{"test"};
    for (int i = 0; i < 1000; ++i) queue.post([&ran, i] { ran.push_back(i); });
  }
  std::vector<int> expected(1000);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(ran, expected);
}

TEST(SerialQueue, tasksOfManyThreadsNeverRunAtOnce) {
  constexpr int each = 500;
  int count = 0;  // unguarded: the queue is its guard
  SerialQueue queue{"test"};
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        for (int j = 0; j < each; ++j) queue.post([&count] { ++count; });
      });
    }
  }
  EXPECT_EQ(queue.sync([&] { return count; }), 4 * each);
}

TEST(SerialQueue, syncWaitsForWhatWasPostedBefore) {
  SerialQueue queue{"test"};
  int steps = 0;
  queue.post([&] { ++steps; });
  queue.sync([&] { ++steps; });
  EXPECT_EQ(steps, 2);
}

TEST(SerialQueue, tasksRunOnOneThreadOfTheGivenName) {
  SerialQueue queue{"vesk.a-very-long-name"};
  const auto name = [] {
    std::array<char, 16> buffer{};
    ::pthread_getname_np(::pthread_self(), buffer.data(), buffer.size());
    return std::string{buffer.data()};
  };
  const auto thread = [] { return std::this_thread::get_id(); };
  EXPECT_EQ(queue.sync(name), "vesk.a-very-lon");
  EXPECT_EQ(queue.sync(thread), queue.sync(thread));
  EXPECT_NE(queue.sync(thread), std::this_thread::get_id());
}

TEST(SerialQueue, aTaskMayPostAnother) {
  bool ran = false;
  {
    SerialQueue queue{"test"};
    queue.post([&] { queue.post([&] { ran = true; }); });
    queue.sync([] {});
  }
  EXPECT_TRUE(ran);
}

TEST(SerialQueue, whatATaskHoldsIsGoneBeforeTheNextBegins) {
  SerialQueue queue{"test"};
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watched = held;
  queue.post([held = std::move(held)] {});
  EXPECT_TRUE(queue.sync([&] { return watched.expired(); }));
}

}  // namespace
}  // namespace vesk::capture
