#include <gtest/gtest.h>

#include <array>

#include "editor/SegmentDrag.h"

namespace vesk::editor {
namespace {

using Mode = DragState::Mode;

/// A gesture that began at x = 100 on a segment of 4 s to 8 s.
DragState gesture(Mode mode, double pxPerSec = 20) {
  return {
      .id = "a", .mode = mode, .startX = 100, .pxPerSec = pxPerSec, .origStart = 4, .origEnd = 8};
}

/// Where the gesture leads after so many points, in a recording of 20 s.
DraggedTimes after(Mode mode, double points, double pxPerSec = 20,
                   std::span<const double> candidates = {}) {
  return draggedTimes(gesture(mode, pxPerSec), 100 + points,
                      {.duration = 20, .snapCandidates = candidates});
}

TEST(SegmentDrag, aMoveKeepsTheLength) {
  EXPECT_EQ(after(Mode::move, 60), (DraggedTimes{7, 11}));
  EXPECT_EQ(after(Mode::move, -60), (DraggedTimes{1, 5}));
}

TEST(SegmentDrag, aMoveStopsAtBothEndsOfTheRecording) {
  EXPECT_EQ(after(Mode::move, -1000), (DraggedTimes{0, 4}));
  EXPECT_EQ(after(Mode::move, 1000), (DraggedTimes{16, 20}));
}

TEST(SegmentDrag, whatIsLongerThanTheRecordingMovesToItsStart) {
  const DragState drag{.id = "a", .mode = Mode::move, .origStart = 1, .origEnd = 31};
  EXPECT_EQ(draggedTimes(drag, 50, {.duration = 20}), (DraggedTimes{0, 30}));
}

TEST(SegmentDrag, aMoveSnapsWithItsLeftEdgeAlone) {
  EXPECT_EQ(after(Mode::move, 58, 20, std::array{7.0}), (DraggedTimes{7, 11, 7}));
  EXPECT_EQ(after(Mode::move, 60, 20, std::array{11.1}), (DraggedTimes{7, 11}));
}

TEST(SegmentDrag, aTrimMovesItsEdgeAlone) {
  EXPECT_EQ(after(Mode::trimL, 20), (DraggedTimes{5, 8}));
  EXPECT_EQ(after(Mode::trimR, -20), (DraggedTimes{4, 7}));
}

TEST(SegmentDrag, aTrimStopsAtTheEndsOfTheRecording) {
  EXPECT_EQ(after(Mode::trimL, -1000), (DraggedTimes{0, 8}));
  EXPECT_EQ(after(Mode::trimR, 1000), (DraggedTimes{4, 20}));
}

TEST(SegmentDrag, aTrimLeavesWhatCanStillBeSeen) {
  EXPECT_DOUBLE_EQ(after(Mode::trimL, 1000).start, 8 - 1.2);
  EXPECT_DOUBLE_EQ(after(Mode::trimR, -1000).end, 4 + 1.2);
}

TEST(SegmentDrag, aTrimLeavesWhatIsStillAnEffect) {
  EXPECT_DOUBLE_EQ(after(Mode::trimL, 10000, 200).start, 8 - 0.3);
  EXPECT_DOUBLE_EQ(after(Mode::trimR, -10000, 200).end, 4 + 0.3);
}

TEST(SegmentDrag, aTrimSnapsWithinEightPoints) {
  EXPECT_EQ(after(Mode::trimL, 27, 20, std::array{5.0}), (DraggedTimes{5, 8, 5}));
  EXPECT_EQ(after(Mode::trimR, -13, 20, std::array{7.0}), (DraggedTimes{4, 7, 7}));
  EXPECT_EQ(after(Mode::trimR, -12, 20, std::array{7.0}), (DraggedTimes{4, 7.4}));
}

TEST(SegmentDrag, withoutCandidatesAnEdgeComesWithinAPointOfItsNeighbour) {
  EXPECT_EQ(after(Mode::trimR, 19), (DraggedTimes{4, 8.95}));
}

TEST(SegmentDrag, farOutInALongTakeAPointStillCounts) {
  const DragState drag{.id = "a",
                       .mode = Mode::trimR,
                       .startX = 719'999.25,
                       .pxPerSec = 200,
                       .origStart = 3590,
                       .origEnd = 3599};
  const DraggedTimes times = draggedTimes(drag, 720'000, {.duration = 3600});
  EXPECT_DOUBLE_EQ(times.end, 3599 + 0.75 / 200);
}

TEST(SegmentDrag, onLanesOfAnotherScaleItBeganAtTheSameMoment) {
  const DragState wider = rescaled(gesture(Mode::move), 50);
  EXPECT_EQ(wider.startX, 250);
  EXPECT_EQ(draggedTimes(wider, 250, {.duration = 20}), (DraggedTimes{4, 8}));
  EXPECT_EQ(draggedTimes(wider, 300, {.duration = 20}), (DraggedTimes{5, 9}));
  EXPECT_EQ(draggedTimes(wider, 300, {.duration = 20, .snapCandidates = std::array{5.2}}),
            (DraggedTimes{5, 9}));
  EXPECT_EQ(rescaled(wider, 20), gesture(Mode::move));
}

TEST(SegmentDrag, aMoveBeginsLaterThanATrim) {
  EXPECT_EQ(leastDistance(Mode::move), 3);
  EXPECT_EQ(leastDistance(Mode::trimL), 1);
  EXPECT_EQ(leastDistance(Mode::trimR), 1);
}

}  // namespace
}  // namespace vesk::editor
