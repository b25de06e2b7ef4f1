#include <gtest/gtest.h>

#include "capture/HeldKeys.h"

namespace vesk::capture {
namespace {

using package::RecordedEvent;
using Times = std::vector<double>;

RecordedEvent keyAt(double t) {
  return {.t = t, .type = RecordedEvent::Kind::key};
}

Times times(const std::vector<RecordedEvent>& events) {
  Times result;
  for (const auto& event : events) result.push_back(event.t);
  return result;
}

TEST(HeldKeys, keysAreHeldForHalfASecond) {
  HeldKeys keys{false};
  keys.add(keyAt(1));
  keys.add(keyAt(1.25));
  EXPECT_EQ(times(keys.release(1.4375)), Times{});
  EXPECT_EQ(times(keys.release(1.5)), Times{1});
  EXPECT_EQ(times(keys.release(9)), Times{1.25});
  EXPECT_EQ(times(keys.release(9)), Times{});
}

TEST(HeldKeys, whatWasTypedShortlyBeforeASecretIsDropped) {
  HeldKeys keys{false};
  keys.add(keyAt(1));
  keys.add(keyAt(1.75));
  keys.add(keyAt(2));
  keys.secureInputBegan(2.125);
  EXPECT_EQ(times(keys.releaseAll()), Times{1});
}

TEST(HeldKeys, whatIsTypedDuringASecretIsDroppedEvenIfItComesLater) {
  HeldKeys keys{false};
  keys.secureInputBegan(1);
  keys.add(keyAt(2));
  keys.secureInputEnded(3);
  keys.add(keyAt(2.5));
  keys.add(keyAt(3));
  keys.add(keyAt(3.5));
  EXPECT_EQ(times(keys.releaseAll()), Times{3.5});
}

TEST(HeldKeys, aTakeMayBeginInASecret) {
  HeldKeys keys{true};
  keys.add(keyAt(1));
  EXPECT_EQ(times(keys.releaseAll()), Times{});
}

TEST(HeldKeys, allThatIsHeldCanBeHadAtOnce) {
  HeldKeys keys{false};
  keys.add(keyAt(1));
  keys.add(keyAt(1.5));
  EXPECT_EQ(times(keys.releaseAll()), (Times{1, 1.5}));
  EXPECT_EQ(times(keys.releaseAll()), Times{});
}

}  // namespace
}  // namespace vesk::capture
