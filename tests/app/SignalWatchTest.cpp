#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include "app/SignalWatch.h"

namespace vesk::app {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

bool isBlocked(int signal) {
  sigset_t blocked{};
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return sigismember(&blocked, signal) == 1;
}

void waitUntil(const std::atomic<int>& calls, int count) {
  const auto deadline = Clock::now() + 10s;
  while (calls < count && Clock::now() < deadline) std::this_thread::sleep_for(1ms);
}

TEST(SignalWatch, aSignalCallsTheFunctionInsteadOfEndingTheProcess) {
  std::atomic<int> calls = 0;
  const SignalWatch watch([&] { ++calls; });
  ::kill(::getpid(), SIGINT);
  waitUntil(calls, 1);
  EXPECT_EQ(calls, 1);
  ::kill(::getpid(), SIGTERM);
  waitUntil(calls, 2);
  EXPECT_EQ(calls, 2);
}

TEST(SignalWatch, theFunctionRunsOnAThreadOfItsOwn) {
  std::atomic<int> calls = 0;
  std::atomic<std::thread::id> caller = std::this_thread::get_id();
  const SignalWatch watch([&] {
    caller = std::this_thread::get_id();
    ++calls;
  });
  ::kill(::getpid(), SIGINT);
  waitUntil(calls, 1);
  EXPECT_NE(caller.load(), std::this_thread::get_id());
}

TEST(SignalWatch, signalsAreLeftToItWhileItLives) {
  ASSERT_FALSE(isBlocked(SIGINT));
  {
    const SignalWatch watch([] {});
    EXPECT_TRUE(isBlocked(SIGINT));
    EXPECT_TRUE(isBlocked(SIGTERM));
    EXPECT_FALSE(isBlocked(SIGHUP));
    bool inOtherThread = false;
    std::jthread([&] { inOtherThread = isBlocked(SIGINT); }).join();
    EXPECT_TRUE(inOtherThread);
  }
  EXPECT_FALSE(isBlocked(SIGINT));
  EXPECT_FALSE(isBlocked(SIGTERM));
}

TEST(SignalWatch, withoutASignalItGoesQuietly) {
  std::atomic<int> calls = 0;
  const auto start = Clock::now();
  {
    const SignalWatch watch([&] { ++calls; });
  }
  EXPECT_LT(Clock::now() - start, 5s);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace vesk::app
