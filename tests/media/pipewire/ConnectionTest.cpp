#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "capture/pipewire/TestSoundServer.h"
#include "media/pipewire/Connection.h"

namespace vesk::media::pipewire {
namespace {

using capture::pipewire::test::TestSoundServer;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

bool comesTrue(const std::atomic<int>& count, int wanted) {
  const auto end = steady_clock::now() + milliseconds{5'000};
  while (count < wanted && steady_clock::now() < end) std::this_thread::sleep_for(milliseconds{5});
  return count == wanted;
}

TEST(Connection, isOpenedToAServerThatAnswers) {
  const TestSoundServer server;
  const auto connection = Connection::openAnswered(server.remote());
  ASSERT_NE(connection, nullptr);
  EXPECT_FALSE(connection->isLost());
  const Connection::Lock lock{*connection};
  EXPECT_TRUE(connection->roundTrip());
}

TEST(Connection, doesNotWaitForAServerThatStandsStillUnlessAskedTo) {
  const TestSoundServer server;
  server.freeze();
  const auto begun = steady_clock::now();
  EXPECT_NE(Connection::open(server.remote()), nullptr);
  EXPECT_LT(steady_clock::now() - begun, milliseconds{500});
  EXPECT_EQ(Connection::openAnswered(server.remote()), nullptr);
  server.thaw();
  EXPECT_NE(Connection::openAnswered(server.remote()), nullptr);
}

TEST(Connection, tellsOnceThatTheServerWentAway) {
  TestSoundServer server;
  std::atomic<int> losses = 0;
  const auto connection = Connection::openAnswered(server.remote(), [&] { ++losses; });
  ASSERT_NE(connection, nullptr);
  server.kill();
  EXPECT_TRUE(comesTrue(losses, 1));
  EXPECT_TRUE(connection->isLost());
  const Connection::Lock lock{*connection};
  EXPECT_FALSE(connection->roundTrip());
}

/// Each ends what it has only just begun, on a machine with more to do than it has processors.
TEST(Connection, isGivenUpAtOnceWhereNoServerIs) {
  std::atomic<int> opened = 0;
  std::atomic<int> ended = 0;
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 8; ++thread) {
      threads.emplace_back([&] {
        for (int time = 0; time < 40; ++time) {
          opened += Connection::open("/nowhere/pipewire-0") ? 1 : 0;
          ++ended;
        }
      });
    }
  }
  EXPECT_EQ(opened, 0);
  EXPECT_EQ(ended, 320);
}

}  // namespace
}  // namespace vesk::media::pipewire
