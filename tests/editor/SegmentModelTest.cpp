#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include "editor/QtApplication.h"
#include "editor/SegmentModel.h"

namespace vesk::editor {
namespace {

using motion::ZoomSegment;
using testing::ElementsAre;

ZoomSegment segment(const std::string& id, double start, double end) {
  ZoomSegment made;
  made.id = id;
  made.start = start;
  made.end = end;
  return made;
}

std::vector<std::string> idsIn(const std::vector<ZoomSegment>& segments, TimeRange range,
                               const std::string& held = {}) {
  std::vector<std::string> ids;
  for (const SegmentRow& row : segmentsIn(segments, range, held)) ids.push_back(row.id);
  return ids;
}

TEST(SegmentsInView, areThoseThatReachIntoTheRangeHoweverTheyOverlapAndStand) {
  const std::vector segments{segment("late", 50, 60), segment("long", 0, 100),
                             segment("early", 2, 4), segment("touching", 20, 30)};
  EXPECT_THAT(idsIn(segments, {.from = 30, .to = 40}), ElementsAre("long", "touching"));
  EXPECT_THAT(idsIn(segments, {.from = 0, .to = 3}), ElementsAre("long", "early"));
}

TEST(SegmentsInView, theHeldOneStaysWhereverItGoes) {
  const std::vector segments{segment("a", 2, 4), segment("b", 50, 60)};
  EXPECT_THAT(idsIn(segments, {.from = 45, .to = 55}, "a"), ElementsAre("a", "b"));
}

TEST(SegmentsInView, oneIdUsedTwiceGivesTwoRows) {
  const std::vector segments{segment("a", 2, 4), segment("a", 50, 60)};
  const auto rows = segmentsIn(segments, {.from = 0, .to = 100}, {});
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_NE(rows[0].key(), rows[1].key());
  // The second is recognised where the first one is out of view.
  EXPECT_EQ(segmentsIn(segments, {.from = 45, .to = 55}, {}).at(0).key(), rows[1].key());
}

TEST(SegmentModel, tellsWhatABlockShows) {
  test::qtApplication();
  SegmentModel model;
  const QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  ZoomSegment shown = segment("auto_1", 1.5, 6);
  shown.level = 2.25;
  shown.enabled = false;
  shown.isManual = true;
  model.setRows(segmentsIn(std::vector{shown}, {.from = 0, .to = 9}, {}));
  ASSERT_EQ(model.rowCount(), 1);
  const auto value = [&](int role) { return model.data(model.index(0), role); };
  EXPECT_EQ(value(SegmentModel::idRole).toString(), "auto_1");
  EXPECT_EQ(value(SegmentModel::startRole).toDouble(), 1.5);
  EXPECT_EQ(value(SegmentModel::endRole).toDouble(), 6);
  EXPECT_EQ(value(SegmentModel::levelTextRole).toString(), QStringLiteral("2.2×"));
  EXPECT_FALSE(value(SegmentModel::isEnabledRole).toBool());
  EXPECT_TRUE(value(SegmentModel::isManualRole).toBool());
  EXPECT_EQ(value(SegmentModel::nameRole).toString(),
            QStringLiteral("手动效果段 00:01.50 到 00:06.00，2.2×，已停用"));
}

}  // namespace
}  // namespace vesk::editor
