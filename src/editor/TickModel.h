#pragma once

#include <QHash>
#include <string>
#include <vector>

#include "editor/RowsInView.h"
#include "editor/TimeRange.h"

namespace vesk::editor {

/// A tick of the ruler.
struct Tick {
  double time = 0;  ///< seconds
  std::string label;

  double key() const { return time; }
  bool operator==(const Tick&) const = default;
};

/// The ticks from the start of a recording to its end that lie in a range.
/// @param pxPerSec points a second, which decides how close they stand and what they tell.
std::vector<Tick> ticksIn(TimeRange range, double duration, double pxPerSec);

/// The ticks in view.
class TickModel : public RowsInView<Tick> {
  Q_OBJECT

 public:
  enum Role { timeRole = Qt::UserRole, labelRole };

  using RowsInView::RowsInView;

  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;
};

}  // namespace vesk::editor
