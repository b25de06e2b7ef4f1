#pragma once

#include <QHash>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "editor/RowsInView.h"
#include "editor/TimeRange.h"
#include "motion/ZoomSegment.h"

namespace vesk::editor {

/// A segment in view.
struct SegmentRow {
  std::string id;
  int repetition = 0;  ///< of the id: a damaged document may use one twice
  double start = 0;    ///< seconds
  double end = 0;
  double level = 2;
  bool isEnabled = true;
  bool isManual = false;

  std::pair<std::string, int> key() const { return {id, repetition}; }
  bool operator==(const SegmentRow&) const = default;
};

/// The segments that reach into a range, in the order in which they are listed. They may overlap
/// and stand in any order.
/// @param held the one that the pointer holds, which stays wherever it goes.
std::vector<SegmentRow> segmentsIn(std::span<const motion::ZoomSegment> segments, TimeRange range,
                                   const std::string& held);

/// A segment in words, for those who do not see it.
std::string segmentName(const SegmentRow& row);

/// The segments in view.
class SegmentModel : public RowsInView<SegmentRow> {
  Q_OBJECT

 public:
  enum Role {
    idRole = Qt::UserRole,
    startRole,
    endRole,
    levelTextRole,
    isEnabledRole,
    isManualRole,
    nameRole
  };

  using RowsInView::RowsInView;

  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;
};

}  // namespace vesk::editor
