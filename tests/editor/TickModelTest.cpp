#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "editor/TickModel.h"

namespace vesk::editor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(Ticks, standAtMultiplesOfTheInterval) {
  EXPECT_THAT(ticksIn({.from = 29, .to = 95}, 1000, 4),
              ElementsAre(Tick{30, "0:30"}, Tick{60, "1:00"}, Tick{90, "1:30"}));
  EXPECT_THAT(ticksIn({.from = 0.5, .to = 2}, 1000, 100),
              ElementsAre(Tick{1, "0:01.0"}, Tick{2, "0:02.0"}));
}

TEST(Ticks, standWithinTheRecording) {
  EXPECT_THAT(ticksIn({.from = -50, .to = 500}, 6, 24),
              ElementsAre(Tick{0, "0:00"}, Tick{5, "0:05"}));
  EXPECT_THAT(ticksIn({.from = -50, .to = 500}, 0, 24), ElementsAre(Tick{0, "0:00"}));
}

TEST(Ticks, ofAnEndlessRecordingAreAsManyAsAreSeen) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_THAT(ticksIn({.from = 0, .to = 50}, infinity, 24), SizeIs(11));
  EXPECT_THAT(ticksIn({.from = 1e300, .to = infinity}, infinity, 24), IsEmpty());
}

TEST(Ticks, ofNoLengthAtAllAreNone) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(ticksIn({.from = nan, .to = nan}, 20, 24), IsEmpty());
  EXPECT_THAT(ticksIn({.from = 0, .to = 50}, -1, 24), IsEmpty());
}

}  // namespace
}  // namespace vesk::editor
