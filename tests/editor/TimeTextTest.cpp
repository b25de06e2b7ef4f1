#include <gtest/gtest.h>

#include <limits>

#include "editor/TimeText.h"

namespace vesk::editor {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(TimeText, theRulerTellsMinutesAndWholeSeconds) {
  EXPECT_EQ(rulerText(0, false), "0:00");
  EXPECT_EQ(rulerText(65, false), "1:05");
  EXPECT_EQ(rulerText(3600, false), "60:00");
  EXPECT_EQ(rulerText(2.5, false), "0:02");
}

TEST(TimeText, theRulerTellsTenthsWhereAskedTo) {
  EXPECT_EQ(rulerText(0.5, true), "0:00.5");
  EXPECT_EQ(rulerText(61, true), "1:01.0");
  EXPECT_EQ(rulerText(2.3, true), "0:02.3");
}

TEST(TimeText, theRulerNeverReadsSixtySeconds) {
  EXPECT_EQ(rulerText(59.999, false), "0:59");
  EXPECT_EQ(rulerText(59.999, true), "0:59.9");
}

TEST(TimeText, thePlayheadIsRoundedToHundredths) {
  EXPECT_EQ(playheadText(0), "00:00.00");
  EXPECT_EQ(playheadText(65.25), "01:05.25");
  EXPECT_EQ(playheadText(9.996), "00:10.00");
  EXPECT_EQ(playheadText(59.999), "01:00.00");
  EXPECT_EQ(playheadText(6000), "100:00.00");
}

TEST(TimeText, theTransportCountsFullHundredths) {
  EXPECT_EQ(transportText(65.259), "01:05.25");
  EXPECT_EQ(transportText(59.999), "00:59.99");
  // A hair below 435 hundredths, by the calculation alone.
  EXPECT_EQ(transportText(4.35), "00:04.35");
}

TEST(TimeText, whatIsNoTimeReadsAsZeroAndWhatIsEndlessIsCut) {
  for (const auto text : {playheadText, transportText}) {
    EXPECT_EQ(text(nan), "00:00.00");
    EXPECT_EQ(text(-3), "00:00.00");
    EXPECT_EQ(text(infinity), text(1e9));
    EXPECT_EQ(text(1e300), text(1e9));
  }
  EXPECT_EQ(rulerText(nan, true), "0:00.0");
  EXPECT_EQ(rulerText(1e300, false), rulerText(1e9, false));
}

}  // namespace
}  // namespace vesk::editor
