#include <gtest/gtest.h>

#include <limits>

#include "media/SoundGain.h"

namespace vesk::media {
namespace {

TEST(SoundGain, isUsedAsItIsWithinItsRange) {
  for (const double gain : {0.0, 0.3, 1.0, 2.0}) EXPECT_EQ(usedGain(gain), gain);
}

TEST(SoundGain, beyondItsRangeIsTheNearestWithinIt) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double gain : {2.5, 1e30, infinity}) EXPECT_EQ(usedGain(gain), 2);
  for (const double gain : {-0.001, -1e30, -infinity}) EXPECT_EQ(usedGain(gain), 0);
}

TEST(SoundGain, thatIsNoNumberIsOne) {
  EXPECT_EQ(usedGain(std::numeric_limits<double>::quiet_NaN()), 1);
}

}  // namespace
}  // namespace vesk::media
