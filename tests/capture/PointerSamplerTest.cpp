#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "capture/Clock.h"
#include "capture/PointerSampler.h"
#include "capture/contract/Heard.h"

namespace vesk::capture {
namespace {

TEST(MonotonicClock, neverGoesBack) {
  const MonotonicClock clock;
  double last = clock.now();
  EXPECT_GT(last, 0);
  for (int i = 0; i < 1000; ++i) {
    const double now = clock.now();
    EXPECT_GE(now, last);
    last = now;
  }
}

TEST(PointerSampler, itCallsNoMoreThan120TimesASecondWithTimesOfTheMonotonicClock) {
  const MonotonicClock clock;
  contract::Heard<double> samples;
  const double before = clock.now();
  {
    const PointerSampler sampler{[&](double now) { samples.add(now); }};
    ASSERT_TRUE(samples.comesTo(31));
  }
  const double after = clock.now();
  const auto times = samples.all();
  EXPECT_GE(times.front(), before);
  EXPECT_LE(times.back(), after);
  for (std::size_t i = 1; i < times.size(); ++i) EXPECT_GT(times[i], times[i - 1]);
  // The first sample may be late and the last in time.
  EXPECT_GE(times[30] - times[0], 29.0 / 120);
}

TEST(PointerSampler, noCallComesAfterItsEnd) {
  std::atomic<int> calls = 0;
  auto sampler = std::make_unique<PointerSampler>([&](double) { ++calls; });
  ASSERT_TRUE(contract::comesTrue([&] { return calls > 2; }));
  sampler.reset();
  const int atEnd = calls;
  contract::Heard<double> others;
  const PointerSampler other{[&](double now) { others.add(now); }};
  ASSERT_TRUE(others.comesTo(3));
  EXPECT_EQ(calls, atEnd);
}

TEST(PointerSampler, aSlowCallMakesTheNextOnesFallOut) {
  contract::Heard<double> samples;
  const PointerSampler sampler{[&](double now) {
    samples.add(now);
    if (samples.count() == 1) std::this_thread::sleep_for(std::chrono::milliseconds{60});
  }};
  ASSERT_TRUE(samples.comesTo(3));
  const auto times = samples.all();
  EXPECT_GE(times[1] - times[0], 0.06);
  EXPECT_GE(times[2] - times[0], 0.06 + 0.5 / 120);
}

}  // namespace
}  // namespace vesk::capture
