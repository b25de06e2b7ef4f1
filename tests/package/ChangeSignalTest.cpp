#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "package/ChangeSignal.h"

namespace vesk::package {
namespace {

TEST(ChangeSignal, tellsEverySubscriber) {
  ChangeSignal signal;
  int first = 0;
  int second = 0;
  const auto one = signal.subscribe([&] { ++first; });
  const auto two = signal.subscribe([&] { ++second; });
  signal.notify();
  signal.notify();
  EXPECT_EQ(first, 2);
  EXPECT_EQ(second, 2);
}

TEST(ChangeSignal, anEndedSubscriptionIsToldNothing) {
  ChangeSignal signal;
  int told = 0;
  {
    const auto subscription = signal.subscribe([&] { ++told; });
    signal.notify();
  }
  signal.notify();
  EXPECT_EQ(told, 1);
}

TEST(ChangeSignal, aSubscriptionMovesWithItsOwner) {
  ChangeSignal signal;
  int told = 0;
  ChangeSignal::Subscription kept;
  {
    auto subscription = signal.subscribe([&] { ++told; });
    kept = std::move(subscription);
  }
  signal.notify();
  EXPECT_EQ(told, 1);
}

TEST(ChangeSignal, aSubscriptionMayOutliveTheSignal) {
  ChangeSignal::Subscription subscription;
  {
    ChangeSignal signal;
    subscription = signal.subscribe([] {});
  }
  subscription = {};
}

TEST(ChangeSignal, observersMayComeAndGoWhileTheyAreTold) {
  ChangeSignal signal;
  int late = 0;
  int gone = 0;
  ChangeSignal::Subscription added;
  std::optional<ChangeSignal::Subscription> removed;
  const auto subscription = signal.subscribe([&] {
    added = signal.subscribe([&] { ++late; });
    removed.reset();
  });
  removed = signal.subscribe([&] { ++gone; });
  signal.notify();
  EXPECT_EQ(gone, 0);
  EXPECT_EQ(late, 0);
  signal.notify();
  EXPECT_EQ(late, 0) << "the observer of the first round was replaced in the second";
}

}  // namespace
}  // namespace vesk::package
