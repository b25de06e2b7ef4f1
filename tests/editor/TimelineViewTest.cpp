#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <limits>

#include "editor/TimelineStage.h"

namespace vesk::editor::test {
namespace {

using Kind = package::RecordedEvent::Kind;
using testing::SizeIs;

class TimelineViewTest : public TimelineStage {};

// What is seen.

TEST_F(TimelineViewTest, showsWhatIsInViewAndALittleBeyond) {
  EXPECT_THAT(view_.segments()->rows(), SizeIs(2));
  EXPECT_THAT(view_.markers()->rows(), SizeIs(4));
  EXPECT_THAT(view_.ticks()->rows(), SizeIs(5));
  view_.viewport()->setWidth(100);
  EXPECT_THAT(view_.segments()->rows(), SizeIs(1));
  EXPECT_THAT(view_.markers()->rows(), SizeIs(2));
  EXPECT_THAT(view_.ticks()->rows(), SizeIs(3));
  view_.viewport()->setContentX(300);
  ASSERT_THAT(view_.segments()->rows(), SizeIs(1));
  EXPECT_EQ(view_.segments()->rows()[0].id, "b");
}

TEST_F(TimelineViewTest, helpSaysWhatAMarkerIs) {
  const auto help = [&](int row) {
    return view_.markers()->data(view_.markers()->index(row), MarkerModel::helpRole).toString();
  };
  EXPECT_EQ(help(0), QStringLiteral("已挂效果 · 双击移除"));
  EXPECT_EQ(help(1), QStringLiteral("素材点 · 双击提升为效果"));
  EXPECT_EQ(help(3), QStringLiteral("手动放大标记"));
  open(20, {markAt(3, Kind::zoomOut)}, "");
  EXPECT_EQ(help(0), QStringLiteral("手动还原标记"));
}

TEST_F(TimelineViewTest, theHeaderTellsOfTheSelection) {
  EXPECT_FALSE(view_.hasSelection());
  EXPECT_EQ(view_.selectionText(), QString());
  const QSignalSpy changed(&view_, &TimelineView::selectionChanged);
  view_.select("b");
  EXPECT_GE(changed.count(), 1);
  EXPECT_TRUE(view_.hasSelection());
  EXPECT_EQ(view_.selectionText(), QStringLiteral("2.00s · 2.5×"));
  EXPECT_EQ(view_.selectionToggleText(), QStringLiteral("停用"));
  view_.toggleSegmentEnabled("b");
  EXPECT_EQ(view_.selectionToggleText(), QStringLiteral("启用"));
}

TEST_F(TimelineViewTest, aSelectionWhoseSegmentIsGoneIsNone) {
  view_.select("gone");
  EXPECT_FALSE(view_.hasSelection());
  EXPECT_EQ(view_.selectionText(), QString());
}

// The playhead.

TEST_F(TimelineViewTest, thePlayheadMovesWithoutAnythingElse) {
  std::vector<std::unique_ptr<QSignalSpy>> spies;
  for (QAbstractItemModel* model : std::initializer_list<QAbstractItemModel*>{
           view_.ticks(), view_.markers(), view_.segments()}) {
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::dataChanged));
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::rowsInserted));
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::rowsRemoved));
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::modelReset));
  }
  spies.push_back(std::make_unique<QSignalSpy>(view_.viewport(), &TimelineViewport::rangeChanged));
  spies.push_back(std::make_unique<QSignalSpy>(&view_, &TimelineView::selectionChanged));
  const QSignalSpy playhead(&view_, &TimelineView::playheadChanged);
  for (int frame = 1; frame <= 60; ++frame) session_->seek(frame / 60.0);
  EXPECT_EQ(playhead.count(), 60);
  EXPECT_EQ(view_.playheadX(), 20);
  EXPECT_EQ(view_.playheadText(), QStringLiteral("00:01.00"));
  for (const auto& spy : spies) EXPECT_EQ(spy->count(), 0);
}

TEST_F(TimelineViewTest, thePageTurnsWhenThePlayheadLeavesIt) {
  session_->seek(14.9);
  EXPECT_EQ(view_.viewport()->contentX(), 0);
  session_->seek(15.1);
  EXPECT_EQ(view_.viewport()->contentX(), 100);
}

TEST_F(TimelineViewTest, aPlayheadThatTheUserScrolledAwayFromIsLeftAlone) {
  view_.viewport()->setContentX(100);
  session_->seek(1);
  session_->seek(1.1);
  EXPECT_EQ(view_.viewport()->contentX(), 100);
}

TEST_F(TimelineViewTest, theRulerMovesThePlayhead) {
  view_.scrub(60);
  EXPECT_EQ(session_->currentTime(), 3);
  view_.scrub(-40);
  EXPECT_EQ(session_->currentTime(), 0);
  view_.scrub(5000);
  EXPECT_EQ(session_->currentTime(), 20);
  // The end is just seen, not a page turned.
  EXPECT_EQ(view_.viewport()->contentX(), 100);
  view_.scrub(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(session_->currentTime(), 20);
}

TEST_F(TimelineViewTest, zoomingKeepsThePlayheadInItsPlace) {
  session_->seek(10);
  const double before = view_.playheadX() - view_.viewport()->contentX();
  view_.zoomIn();
  EXPECT_EQ(ui_.pxPerSec(), 28);
  EXPECT_NEAR(view_.playheadX() - view_.viewport()->contentX(), before, 0.5);
  view_.zoomOut();
  EXPECT_DOUBLE_EQ(ui_.pxPerSec(), 20);
  view_.fit();
  EXPECT_DOUBLE_EQ(ui_.pxPerSec(), 41.2);
}

TEST_F(TimelineViewTest, zoomingInAndOutEndsWhereItBegan) {
  session_->seek(10);
  view_.viewport()->setContentX(10.5);
  view_.zoomIn();
  view_.zoomOut();
  EXPECT_EQ(view_.viewport()->contentX(), 11);
}

TEST_F(TimelineViewTest, zoomingStopsAtItsEnds) {
  for (int i = 0; i < 20; ++i) view_.zoomIn();
  EXPECT_EQ(ui_.pxPerSec(), 200);
  EXPECT_FALSE(view_.viewport()->canZoomIn());
  for (int i = 0; i < 20; ++i) view_.zoomOut();
  EXPECT_EQ(ui_.pxPerSec(), 4);
  EXPECT_FALSE(view_.viewport()->canZoomOut());
}

// The markers.

TEST_F(TimelineViewTest, aTapOnAMarkerSeeksToIt) {
  view_.seekToMarker(11);
  EXPECT_EQ(session_->currentTime(), 11);
}

TEST_F(TimelineViewTest, twoDoubleTapsOnAMarkerRemoveItsEffectAndMakeANewOne) {
  const auto isAttached = [&] { return view_.markers()->rows().at(0).isAttached; };
  EXPECT_TRUE(isAttached());
  view_.toggleEffect(5);
  EXPECT_EQ(session_->segment("a"), nullptr);
  EXPECT_FALSE(isAttached());
  view_.toggleEffect(5);
  EXPECT_EQ(times(*session_), "12.000-14.000 3.425-7.925");
  EXPECT_EQ(view_.selectedSegmentID(), "user_5000");
  EXPECT_TRUE(isAttached());
}

TEST_F(TimelineViewTest, theKeysGoFromMarkerToMarker) {
  session_->seek(10);
  EXPECT_EQ(view_.currentMarker(), -1);
  view_.seekToCurrentMarker();
  view_.toggleCurrentMarker();
  EXPECT_EQ(session_->currentTime(), 10);
  view_.stepMarker(1);
  EXPECT_EQ(view_.currentMarker(), 1);
  view_.seekToCurrentMarker();
  EXPECT_EQ(session_->currentTime(), 11);
  view_.stepMarker(1);
  view_.stepMarker(1);
  view_.stepMarker(1);
  EXPECT_EQ(view_.currentMarker(), 3);
  EXPECT_TRUE(view_.viewport()->isSeen(18 * 20));
  // A manual mark is no effect to be.
  view_.toggleCurrentMarker();
  EXPECT_EQ(times(*session_), "4.000-8.000 12.000-14.000");
  view_.stepMarker(-1);
  view_.toggleCurrentMarker();
  EXPECT_EQ(view_.selectedSegmentID(), "user_16000");
}

TEST_F(TimelineViewTest, aRecordingWithoutMarkersHasNoneToGoTo) {
  view_.stepMarker(1);
  open(20, {}, "");
  EXPECT_EQ(view_.currentMarker(), -1);
  view_.stepMarker(1);
  view_.stepSelection(1);
  EXPECT_EQ(view_.currentMarker(), -1);
  EXPECT_EQ(view_.selectedSegmentID(), "");
}

// The segments.

TEST_F(TimelineViewTest, theKeysGoFromSegmentToSegmentByTheirStarts) {
  open(20, {},
       R"({"id":"late","start":15,"end":18},{"id":"early","start":1,"end":3},)"
       R"({"id":"middle","start":6,"end":9})");
  session_->seek(4);
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "middle");
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "late");
  EXPECT_TRUE(view_.viewport()->isSeen(18 * 20));
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "late");
  view_.stepSelection(-2);
  EXPECT_EQ(view_.selectedSegmentID(), "early");
}

TEST_F(TimelineViewTest, theKeysBeginWithTheSegmentUnderThePlayhead) {
  open(20, {},
       R"({"id":"long","start":0,"end":18},{"id":"first","start":1,"end":3},)"
       R"({"id":"second","start":4,"end":6})");
  session_->seek(10);
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "long");
}

TEST_F(TimelineViewTest, behindAllSegmentsTheKeysBeginWithTheLast) {
  session_->seek(19);
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "b");
}

TEST_F(TimelineViewTest, aTapOnEmptySpaceAddsASegmentAndSelectsIt) {
  view_.addSegmentAt(200);
  EXPECT_EQ(view_.selectedSegmentID(), "");
  view_.addSegmentAt(17 * 20);
  EXPECT_EQ(view_.selectedSegmentID(), "user_17000");
  EXPECT_DOUBLE_EQ(segment("user_17000").start, 17 - 1.575);
  view_.addSegmentAt(std::numeric_limits<double>::quiet_NaN());
  EXPECT_THAT(session_->timeline().segments, SizeIs(3));
}

TEST_F(TimelineViewTest, aCopyIsSelectedAndAFailedOneLeavesTheSelection) {
  view_.select("a");
  view_.duplicateSegment("b");
  EXPECT_EQ(view_.selectedSegmentID(), "dup_1795000000123");
  open(20, {}, R"({"id":"a","start":4,"end":18})");
  view_.select("a");
  view_.duplicateSegment("a");
  EXPECT_EQ(view_.selectedSegmentID(), "a");
  EXPECT_THAT(session_->timeline().segments, SizeIs(1));
}

TEST_F(TimelineViewTest, deletingTheSelectedSegmentSelectsNone) {
  view_.select("a");
  view_.deleteSegment("a");
  EXPECT_EQ(view_.selectedSegmentID(), "");
  EXPECT_EQ(times(*session_), "12.000-14.000");
}

// A long take.

TEST_F(TimelineViewTest, ofAnHourOnlyWhatIsInViewIsListed) {
  std::vector<package::RecordedEvent> clicks;
  for (int i = 0; i < 2000; ++i) clicks.push_back(clickAt(i * 1.8));
  std::string segments;
  for (int i = 0; i < 300; ++i) {
    segments += fmt::format(R"({}{{"id":"s{}","start":{},"end":{}}})", i > 0 ? "," : "", i, i * 12,
                            i * 12 + 5);
  }
  open(3600, clicks, segments);
  view_.viewport()->setWidth(1000);
  ui_.setPxPerSec(200);
  const QSignalSpy reset(view_.markers(), &QAbstractItemModel::modelReset);
  std::size_t listed = view_.markers()->rows().size();
  QObject::connect(view_.markers(), &QAbstractItemModel::rowsInserted,
                   [&](const QModelIndex&, int first, int last) { listed += last - first + 1; });
  for (double x = 0; x < 720'000; x += 500) {
    view_.viewport()->setContentX(x);
    ASSERT_LE(view_.markers()->rows().size(), 4U);
    ASSERT_LE(view_.segments()->rows().size(), 2U);
    ASSERT_LE(view_.ticks()->rows().size(), 13U);
  }
  // Each came into view once.
  EXPECT_EQ(listed, 2000U);
  EXPECT_EQ(reset.count(), 0);
}

TEST_F(TimelineViewTest, aRecordingWithoutLengthHasATimeline) {
  open(0, {}, "");
  view_.zoomIn();
  view_.fit();
  view_.scrub(50);
  view_.addSegmentAt(10);
  EXPECT_EQ(session_->currentTime(), 0);
  EXPECT_EQ(view_.viewport()->contentWidth(), 0);
}

}  // namespace
}  // namespace vesk::editor::test
