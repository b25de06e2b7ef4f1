#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <cmath>
#include <glm/geometric.hpp>

#include "editor/PreviewControllerStage.h"

// The changes to single segments.
namespace vesk::editor::test {
namespace {

using testing::SizeIs;
using testing::StartsWith;

class PreviewControllerSegmentTest : public PreviewControllerStage {};

TEST_F(PreviewControllerSegmentTest, theTimesOfASegmentAreWrittenWithoutATrack) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const auto track = session->look().cameraTrack;
  session->setSegmentTimes(session->timeline().segments[0].id, 1, 4);
  EXPECT_TRUE(session->hasManualEdits());
  EXPECT_EQ(session->look().cameraTrack, track);
  session->rebuildTrack();
  EXPECT_NE(session->look().cameraTrack, track);
}

TEST_F(PreviewControllerSegmentTest, anUnknownSegmentChangesNothing) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const std::string before = times(*session);
  session->setSegmentTimes("none", 1, 4);
  session->deleteSegment("none");
  session->toggleSegmentEnabled("none");
  EXPECT_FALSE(session->duplicateSegment("none"));
  EXPECT_EQ(times(*session), before);
  EXPECT_FALSE(session->canUndo());
  EXPECT_FALSE(session->hasManualEdits());
}

TEST_F(PreviewControllerSegmentTest, aSegmentIsAddedWhereTheCursorIs) {
  const auto session = makeSession();
  session->open(putTake("clicks", {clickAt(15, 0.2, 0.8)}));
  session->changeUseAutoDetection(false);
  const auto id = session->addSegment(15);
  ASSERT_TRUE(id);
  EXPECT_EQ(*id, "user_15000");
  const motion::ZoomSegment* segment = session->segment(*id);
  EXPECT_NEAR(segment->focus.x, 0.2, 1e-6);
  EXPECT_NEAR(segment->focus.y, 0.8, 1e-6);
  EXPECT_TRUE(session->hasManualEdits());
  EXPECT_FALSE(session->addSegment(15.5));
}

TEST_F(PreviewControllerSegmentTest, aNewSegmentLooksWhereTheCursorIsDrawn) {
  std::vector<package::RecordedEvent> moves;
  for (int i = 0; i < 200; ++i) {
    const double t = 14 + 0.01 * i;
    // Fast and to and fro, so that each strength and window of the filter gives a place of its own.
    moves.push_back(markAt(t, package::RecordedEvent::Kind::move, 0.5 + 0.4 * std::sin(25 * t),
                           0.5 + 0.3 * std::cos(19 * t)));
  }
  const auto session = makeSession();
  session->open(putTake("moves", moves));
  const auto id = session->addSegment(15);
  ASSERT_TRUE(id);
  const motion::CursorTrack track(*session->project());
  const glm::vec2 expected = track.smoothed(15, 0.7, 0.12);
  EXPECT_EQ(session->segment(*id)->focus, expected);
  EXPECT_GT(glm::distance(expected, track.smoothed(15, 0.6, 0.12)), 1e-3F);
  EXPECT_GT(glm::distance(expected, track.smoothed(15, 0.7, 0.1)), 1e-3F);
}

TEST_F(PreviewControllerSegmentTest, deletingTakesAllThatBearTheId) {
  const auto take = putMarkedTake();
  write(take / "edit.json", R"({"segments":[{"id":"a","start":1,"end":2},
      {"id":"b","start":3,"end":4},{"id":"a","start":5,"end":6}]})");
  const auto session = makeSession();
  session->open(take);
  ASSERT_THAT(session->timeline().segments, SizeIs(3));
  session->deleteSegment("a");
  EXPECT_EQ(times(*session), "3.000-4.000");
}

TEST_F(PreviewControllerSegmentTest, aClickIsDemotedAndPromotedByTheSameGesture) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  session->toggleEffect(3);
  EXPECT_THAT(session->timeline().segments, SizeIs(1));
  const auto id = session->toggleEffect(3);
  ASSERT_TRUE(id);
  EXPECT_EQ(session->segment(*id)->start, 3 - 1.575);
  session->undo();
  session->undo();
  EXPECT_THAT(session->timeline().segments, SizeIs(2));
}

TEST_F(PreviewControllerSegmentTest, deletingTellsWhoHadItSelected) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const std::string id = session->timeline().segments[0].id;
  QSignalSpy deleted(session.get(), &PreviewController::segmentDeleted);
  session->deleteSegment(session->timeline().segments[0].id);
  ASSERT_EQ(deleted.count(), 1);
  EXPECT_EQ(deleted[0][0].toString().toStdString(), id);
}

TEST_F(PreviewControllerSegmentTest, aCopyBearsTheMomentItWasMade) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  session->changeSegment(session->timeline().segments[1].id, [](motion::ZoomSegment& segment) {
    segment.enabled = false;
    segment.level = 3;
    segment.focus = {0.2F, 0.8F};
    segment.followCursor = false;
    segment.deadzone = 0.4;
    segment.easeIn = 0.3;
    segment.easeOut = 0.7;
    segment.holdMin = 0.9;
    segment.motionBlur = 0.1;
    segment.panDuration = 0.6;
  });
  motion::ZoomSegment expected = session->timeline().segments[1];
  const auto id = session->duplicateSegment(expected.id);
  ASSERT_EQ(id, "dup_1795000000123");
  const double length = expected.end - expected.start;
  expected.id = *id;
  expected.start = expected.end + 0.1;
  expected.end = expected.start + length;
  expected.isManual = true;
  expected.endsWithExplicitReset = false;
  expected.sourceClickTime.reset();
  expected.waypoints.clear();
  EXPECT_EQ(*session->segment(*id), expected);
}

TEST_F(PreviewControllerSegmentTest, theQuestionBeforeAResetNamesTheSegments) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  EXPECT_THAT(session->resetQuestion().toStdString(),
              StartsWith("时间轴上的 2 段将按算法重新推断"));
}

}  // namespace
}  // namespace vesk::editor::test
