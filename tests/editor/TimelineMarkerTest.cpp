#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "editor/SessionStage.h"
#include "editor/TimelineMarker.h"

namespace vesk::editor {
namespace {

using Kind = TimelineMarker::Kind;
using package::RecordedEvent;
using test::clickAt;
using test::markAt;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<TimelineMarker> markersOf(const std::vector<RecordedEvent>& events) {
  return timelineMarkers(package::RecordingProject::make("take", {}, events));
}

TEST(TimelineMarkers, areTheClicksAndTheManualMarksInTheOrderOfTime) {
  RecordedEvent second = clickAt(4);
  second.clickCount = 2;
  EXPECT_THAT(markersOf({markAt(6, RecordedEvent::Kind::zoomOut), second,
                         markAt(2, RecordedEvent::Kind::zoomIn), clickAt(3),
                         markAt(5, RecordedEvent::Kind::move)}),
              ElementsAre(TimelineMarker{2, Kind::zoomIn}, TimelineMarker{3, Kind::click},
                          TimelineMarker{4, Kind::doubleClick}, TimelineMarker{6, Kind::zoomOut}));
}

TEST(TimelineMarkers, oneWithoutATimeIsNone) {
  EXPECT_THAT(markersOf({clickAt(std::numeric_limits<double>::infinity())}), IsEmpty());
}

TEST(TimelineMarkers, thoseInARangeAreFoundWithItsEnds) {
  const auto markers = markersOf({clickAt(1), clickAt(2), clickAt(2), clickAt(5), clickAt(9)});
  EXPECT_EQ(markersIn(markers, {.from = 2, .to = 5}), (MarkerRun{1, 3}));
  EXPECT_EQ(markersIn(markers, {.from = -1, .to = 100}), (MarkerRun{0, 5}));
  EXPECT_EQ(markersIn(markers, {.from = 6, .to = 8}).count, 0U);
}

TEST(TimelineMarkers, noRangeHoldsNone) {
  const auto markers = markersOf({clickAt(1), clickAt(2)});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(markersIn(markers, {.from = 5, .to = 0}).count, 0U);
  EXPECT_EQ(markersIn(markers, {.from = nan, .to = nan}).count, 0U);
  EXPECT_EQ(markersIn({}, {.from = 0, .to = 5}).count, 0U);
}

}  // namespace
}  // namespace vesk::editor
