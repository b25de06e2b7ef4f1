#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <initializer_list>
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

/// Whoever started the tests may have had signals ignored.
class SignalWatch : public testing::Test {
 protected:
  SignalWatch() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) dispose(signal, SIG_DFL);
  }

  static void dispose(int signal, sighandler_t disposition) {
    ASSERT_NE(std::signal(signal, disposition), SIG_ERR);  // NOLINT: no other thread yet
  }
};

TEST_F(SignalWatch, aSignalCallsTheFunctionInsteadOfEndingTheProcess) {
  std::atomic<int> calls = 0;
  const app::SignalWatch watch([&] { ++calls; });
  ::kill(::getpid(), SIGINT);
  waitUntil(calls, 1);
  EXPECT_EQ(calls, 1);
  ::kill(::getpid(), SIGTERM);
  waitUntil(calls, 2);
  EXPECT_EQ(calls, 2);
  ::kill(::getpid(), SIGHUP);
  waitUntil(calls, 3);
  EXPECT_EQ(calls, 3);
}

TEST_F(SignalWatch, theFunctionRunsOnAThreadOfItsOwn) {
  std::atomic<int> calls = 0;
  std::atomic<std::thread::id> caller = std::this_thread::get_id();
  const app::SignalWatch watch([&] {
    caller = std::this_thread::get_id();
    ++calls;
  });
  ::kill(::getpid(), SIGINT);
  waitUntil(calls, 1);
  EXPECT_NE(caller.load(), std::this_thread::get_id());
}

TEST_F(SignalWatch, signalsAreLeftToItWhileItLives) {
  ASSERT_FALSE(isBlocked(SIGINT));
  {
    const app::SignalWatch watch([] {});
    EXPECT_TRUE(isBlocked(SIGINT));
    EXPECT_TRUE(isBlocked(SIGTERM));
    EXPECT_TRUE(isBlocked(SIGHUP));
    EXPECT_FALSE(isBlocked(SIGUSR1));
    bool inOtherThread = false;
    std::jthread([&] { inOtherThread = isBlocked(SIGINT); }).join();
    EXPECT_TRUE(inOtherThread);
  }
  EXPECT_FALSE(isBlocked(SIGINT));
  EXPECT_FALSE(isBlocked(SIGTERM));
  EXPECT_FALSE(isBlocked(SIGHUP));
}

TEST_F(SignalWatch, whatTheProcessWasStartedToIgnoreIsLeftAtThat) {
  dispose(SIGHUP, SIG_IGN);
  std::atomic<int> calls = 0;
  const app::SignalWatch watch([&] { ++calls; });
  EXPECT_FALSE(isBlocked(SIGHUP));
  EXPECT_TRUE(isBlocked(SIGTERM));
  ::kill(::getpid(), SIGHUP);
  ::kill(::getpid(), SIGTERM);
  waitUntil(calls, 1);
  EXPECT_EQ(calls, 1);
  dispose(SIGHUP, SIG_DFL);
}

TEST_F(SignalWatch, withoutASignalItGoesQuietly) {
  std::atomic<int> calls = 0;
  const auto start = Clock::now();
  {
    const app::SignalWatch watch([&] { ++calls; });
  }
  EXPECT_LT(Clock::now() - start, 5s);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace vesk::app
