#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <QSignalSpy>
#include <algorithm>
#include <random>

#include "editor/QtApplication.h"
#include "editor/TickModel.h"

namespace vesk::editor {
namespace {

using testing::ElementsAreArray;

std::vector<Tick> ticks(std::initializer_list<double> times, const std::string& label = "x") {
  std::vector<Tick> made;
  for (const double time : times) made.push_back({.time = time, .label = label});
  return made;
}

class RowsInViewTest : public testing::Test {
 protected:
  RowsInViewTest() { test::qtApplication(); }

  TickModel model_;
  QAbstractItemModelTester tester_{&model_, QAbstractItemModelTester::FailureReportingMode::Fatal};
  QSignalSpy inserted_{&model_, &QAbstractItemModel::rowsInserted};
  QSignalSpy removed_{&model_, &QAbstractItemModel::rowsRemoved};
  QSignalSpy changed_{&model_, &QAbstractItemModel::dataChanged};
  QSignalSpy moved_{&model_, &QAbstractItemModel::rowsMoved};
  QSignalSpy reset_{&model_, &QAbstractItemModel::modelReset};
};

TEST_F(RowsInViewTest, scrollingTakesAwayAtOneEndAndAddsAtTheOther) {
  model_.setRows(ticks({1, 2, 3, 4}));
  inserted_.clear();
  model_.setRows(ticks({3, 4, 5, 6}));
  EXPECT_THAT(model_.rows(), ElementsAreArray(ticks({3, 4, 5, 6})));
  ASSERT_EQ(removed_.count(), 1);
  EXPECT_EQ(removed_[0][1].toInt(), 0);
  EXPECT_EQ(removed_[0][2].toInt(), 1);
  ASSERT_EQ(inserted_.count(), 1);
  EXPECT_EQ(inserted_[0][1].toInt(), 2);
  EXPECT_EQ(inserted_[0][2].toInt(), 3);
  EXPECT_EQ(changed_.count(), 0);
}

TEST_F(RowsInViewTest, theSameRowsCauseNothing) {
  model_.setRows(ticks({1, 2}));
  inserted_.clear();
  model_.setRows(ticks({1, 2}));
  EXPECT_EQ(inserted_.count() + removed_.count() + changed_.count() + moved_.count(), 0);
}

TEST_F(RowsInViewTest, aRowThatStaysIsChangedInItsPlace) {
  model_.setRows(ticks({1, 2, 3}));
  auto rows = ticks({1, 2, 3});
  rows[1].label = "y";
  model_.setRows(rows);
  ASSERT_EQ(changed_.count(), 1);
  EXPECT_EQ(changed_[0][0].toModelIndex().row(), 1);
  EXPECT_EQ(changed_[0][1].toModelIndex().row(), 1);
  EXPECT_EQ(model_.data(model_.index(1), TickModel::labelRole).toString(), "y");
}

TEST_F(RowsInViewTest, rowsInAnotherOrderAreMoved) {
  model_.setRows(ticks({1, 2, 3}));
  inserted_.clear();
  model_.setRows(ticks({3, 1, 2}));
  EXPECT_THAT(model_.rows(), ElementsAreArray(ticks({3, 1, 2})));
  ASSERT_EQ(moved_.count(), 1);
  EXPECT_EQ(moved_[0][1].toInt(), 2);
  EXPECT_EQ(moved_[0][4].toInt(), 0);
  EXPECT_EQ(inserted_.count() + removed_.count() + changed_.count(), 0);
}

TEST_F(RowsInViewTest, whatIsKeptOfARowStaysWithIt) {
  model_.setRows(ticks({1, 2, 3, 4}));
  const QPersistentModelIndex third = model_.index(2);
  model_.setRows(ticks({9, 3, 4, 8, 1}));
  EXPECT_EQ(third.row(), 1);
  model_.setRows(ticks({4, 1, 3}));
  EXPECT_EQ(third.row(), 2);
  model_.setRows(ticks({4, 1}));
  EXPECT_FALSE(third.isValid());
}

TEST_F(RowsInViewTest, fromAnySetOneComesToAnyOther) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<Tick> rows;
    for (int time = 0; time < 30; ++time) {
      if (random() % 2 == 0)
        rows.push_back({.time = double(time), .label = random() % 3 ? "a" : "b"});
    }
    if (random() % 10 == 0) std::ranges::shuffle(rows, random);
    model_.setRows(rows);
    ASSERT_THAT(model_.rows(), ElementsAreArray(rows));
  }
  EXPECT_EQ(reset_.count(), 0);
}

TEST_F(RowsInViewTest, anIndexOfNoRowHasNoData) {
  model_.setRows(ticks({1}));
  EXPECT_FALSE(model_.data(QModelIndex(), TickModel::labelRole).isValid());
  EXPECT_FALSE(model_.data(model_.index(0), Qt::DecorationRole).isValid());
}

}  // namespace
}  // namespace vesk::editor
