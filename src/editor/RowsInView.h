#pragma once

#include <QAbstractListModel>
#include <algorithm>
#include <utility>
#include <vector>

namespace vesk::editor {

/// A model of the rows that are in view at present. Going from one set of rows to the next it keeps
/// all that stay, in whatever order, so that a view keeps what it made for them.
/// @tparam Row a value with `key()`, which is ordered, tells the rows of a set apart and recognises
/// a row in the next one.
template <typename Row>
class RowsInView : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
  }

  const std::vector<Row>& rows() const { return rows_; }

  void setRows(std::vector<Row> rows) {
    if (rows == rows_) return;
    removeAllBut(rows);
    if (!standsInOrder(rows)) bringInOrder(rows);
    insertMissing(rows);
    takeOver(std::move(rows));
  }

 protected:
  /// The row of an index; null for one of no row.
  const Row* row(const QModelIndex& index) const {
    const bool isRow = index.isValid() && std::cmp_less(index.row(), rows_.size());
    return isRow ? &rows_[static_cast<std::size_t>(index.row())] : nullptr;
  }

 private:
  static auto sortedKeys(const std::vector<Row>& rows) {
    std::vector<decltype(std::declval<Row>().key())> keys;
    keys.reserve(rows.size());
    for (const Row& row : rows) keys.push_back(row.key());
    std::ranges::sort(keys);
    return keys;
  }

  void removeAllBut(const std::vector<Row>& rows) {
    const auto keys = sortedKeys(rows);
    const auto stays = [&](const Row& row) { return std::ranges::binary_search(keys, row.key()); };
    for (std::size_t end = rows_.size(); end > 0;) {
      std::size_t first = end;
      while (first > 0 && !stays(rows_[first - 1])) --first;
      if (first < end) {
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
        rows_.erase(rows_.begin() + first, rows_.begin() + end);
        endRemoveRows();
      }
      end = first > 0 ? first - 1 : 0;
    }
  }

  /// Whether the rows that stayed follow each other as they do in `rows`.
  bool standsInOrder(const std::vector<Row>& rows) const {
    std::size_t found = 0;
    for (const Row& row : rows) {
      if (found < rows_.size() && rows_[found].key() == row.key()) ++found;
    }
    return found == rows_.size();
  }

  /// Moves the rows that stayed until they follow each other as they do in `rows`.
  void bringInOrder(const std::vector<Row>& rows) {
    auto next = rows_.begin();
    for (const Row& row : rows) {
      const auto found = std::find_if(next, rows_.end(),
                                      [&](const Row& stayed) { return stayed.key() == row.key(); });
      if (found == rows_.end()) continue;
      if (found != next) moveForward(found, next);
      ++next;
    }
  }

  void moveForward(std::vector<Row>::iterator from, std::vector<Row>::iterator to) {
    const auto source = static_cast<int>(from - rows_.begin());
    beginMoveRows({}, source, source, {}, static_cast<int>(to - rows_.begin()));
    std::rotate(to, from, from + 1);
    endMoveRows();
  }

  void insertMissing(const std::vector<Row>& rows) {
    for (std::size_t first = 0; first < rows.size();) {
      std::size_t end = first;
      while (end < rows.size() &&
             !(first < rows_.size() && rows_[first].key() == rows[end].key())) {
        ++end;
      }
      if (first < end) {
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
        rows_.insert(rows_.begin() + first, rows.begin() + first, rows.begin() + end);
        endInsertRows();
      }
      first = end + 1;
    }
  }

  void takeOver(std::vector<Row> rows) {
    for (std::size_t first = 0; first < rows.size(); ++first) {
      std::size_t end = first;
      while (end < rows.size() && !(rows_[end] == rows[end])) {
        rows_[end] = std::move(rows[end]);
        ++end;
      }
      if (first < end) {
        Q_EMIT dataChanged(index(static_cast<int>(first)), index(static_cast<int>(end) - 1));
        first = end;
      }
    }
  }

  std::vector<Row> rows_;
};

}  // namespace vesk::editor
