#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include "editor/MarkerModel.h"
#include "editor/QtApplication.h"

namespace vesk::editor {
namespace {

using Kind = TimelineMarker::Kind;

class MarkerModelTest : public testing::Test {
 protected:
  MarkerModelTest() {
    test::qtApplication();
    model_.setRows({{.number = 4, .marker = {1.5, Kind::click}, .isAttached = true},
                    {.number = 5, .marker = {2, Kind::doubleClick}},
                    {.number = 6, .marker = {3, Kind::zoomIn}},
                    {.number = 7, .marker = {65, Kind::zoomOut}}});
  }

  QVariant value(int row, int role) const { return model_.data(model_.index(row), role); }

  MarkerModel model_;
  QAbstractItemModelTester tester_{&model_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(MarkerModelTest, tellsTheFormsApart) {
  EXPECT_EQ(value(0, MarkerModel::numberRole), 4);
  EXPECT_EQ(value(0, MarkerModel::timeRole), 1.5);
  const auto form = [&](int row) {
    return std::tuple(value(row, MarkerModel::isClickRole).toBool(),
                      value(row, MarkerModel::isDoubleClickRole).toBool(),
                      value(row, MarkerModel::isZoomInRole).toBool());
  };
  EXPECT_EQ(form(0), std::tuple(true, false, false));
  EXPECT_EQ(form(1), std::tuple(true, true, false));
  EXPECT_EQ(form(2), std::tuple(false, false, true));
  EXPECT_EQ(form(3), std::tuple(false, false, false));
  EXPECT_TRUE(value(0, MarkerModel::isAttachedRole).toBool());
  EXPECT_FALSE(value(1, MarkerModel::isAttachedRole).toBool());
}

TEST_F(MarkerModelTest, saysWhatAMarkerIs) {
  EXPECT_EQ(value(0, MarkerModel::helpRole), QStringLiteral("已挂效果 · 双击移除"));
  EXPECT_EQ(value(1, MarkerModel::helpRole), QStringLiteral("素材点 · 双击提升为效果"));
  EXPECT_EQ(value(2, MarkerModel::helpRole), QStringLiteral("手动放大标记"));
  EXPECT_EQ(value(3, MarkerModel::helpRole), QStringLiteral("手动还原标记"));
  EXPECT_EQ(value(0, MarkerModel::nameRole), QStringLiteral("00:01.50 单击，已挂效果 · 双击移除"));
  EXPECT_EQ(value(1, MarkerModel::nameRole),
            QStringLiteral("00:02.00 双击，素材点 · 双击提升为效果"));
  EXPECT_EQ(value(3, MarkerModel::nameRole), QStringLiteral("01:05.00 手动还原标记"));
}

}  // namespace
}  // namespace vesk::editor
