#include "editor/TickModel.h"

#include <algorithm>
#include <cmath>

#include "editor/TimeText.h"
#include "editor/TimelineScale.h"

namespace vesk::editor {
std::vector<Tick> ticksIn(TimeRange range, double duration, double pxPerSec) {
  const double interval = tickInterval(pxPerSec);
  const double last = std::floor(std::min({range.to, duration, mostSeconds}) / interval);
  std::vector<Tick> ticks;
  for (double i = std::ceil(std::max(range.from, 0.0) / interval); i <= last; ++i) {
    ticks.push_back({.time = i * interval, .label = rulerText(i * interval, hasTenths(pxPerSec))});
  }
  return ticks;
}

QVariant TickModel::data(const QModelIndex& index, int role) const {
  const Tick* const tick = row(index);
  if (tick == nullptr) return {};
  switch (role) {
    case timeRole:
      return tick->time;
    case labelRole:
      return QString::fromStdString(tick->label);
    default:
      return {};
  }
}

QHash<int, QByteArray> TickModel::roleNames() const {
  return {{timeRole, "time"}, {labelRole, "label"}};
}

}  // namespace vesk::editor
