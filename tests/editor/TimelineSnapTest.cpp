#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "editor/SessionStage.h"
#include "editor/TimelineSnap.h"

namespace vesk::editor {
namespace {

using package::RecordedEvent;
using testing::ElementsAre;
using testing::Eq;
using testing::Optional;

motion::ZoomSegment segment(const std::string& id, double start, double end) {
  motion::ZoomSegment made;
  made.id = id;
  made.start = start;
  made.end = end;
  return made;
}

TEST(TimelineSnap, takesTheNearestWithinTheDistance) {
  const std::array candidates{1.0, 5.2, 4.9, 9.0};
  EXPECT_THAT(snap(5, 0.4, candidates), Optional(4.9));
  EXPECT_EQ(snap(7, 0.4, candidates), std::nullopt);
}

TEST(TimelineSnap, aCandidateAtTheDistanceItselfDoesNotCount) {
  EXPECT_EQ(snap(5, 0.5, std::array{5.5}), std::nullopt);
  EXPECT_THAT(snap(5, 0.5, std::array{5.25}), Optional(5.25));
}

TEST(TimelineSnap, ofTwoEquallyNearTheEarlierInTheListWins) {
  EXPECT_THAT(snap(5, 1, std::array{5.25, 4.75}), Optional(5.25));
  EXPECT_THAT(snap(5, 1, std::array{4.75, 5.25}), Optional(4.75));
}

TEST(TimelineSnap, noCandidatesAndNoNumbersDrawNothing) {
  EXPECT_EQ(snap(5, 1, {}), std::nullopt);
  EXPECT_EQ(snap(5, 1, std::array{std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
}

TEST(TimelineSnap, theCandidatesStandInTheirOrder) {
  using Kind = RecordedEvent::Kind;
  const auto project = package::RecordingProject::make(
      "take", {},
      {test::clickAt(3), test::markAt(1, Kind::zoomIn), test::markAt(6, Kind::zoomOut),
       test::clickAt(8), test::markAt(7, Kind::key)});
  const std::array segments{segment("b", 12, 14), segment("held", 4, 5), segment("a", 9, 10)};
  EXPECT_THAT(snapCandidates(2.5, SnapMarks(project), segments, "held"),
              ElementsAre(2.5, 3, 8, 1, 6, 12, 14, 9, 10));
}

TEST(TimelineSnap, thePlayheadBeatsAClickAtTheSameDistance) {
  const auto project = package::RecordingProject::make("take", {}, {test::clickAt(4.75)});
  const auto candidates = snapCandidates(5.25, SnapMarks(project), {}, "held");
  EXPECT_THAT(snap(5, 0.4, candidates), Optional(Eq(5.25)));
}

}  // namespace
}  // namespace vesk::editor
