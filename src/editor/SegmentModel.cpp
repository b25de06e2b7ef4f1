#include "editor/SegmentModel.h"

#include <fmt/format.h>

#include <unordered_map>

#include "editor/TimeText.h"

namespace vesk::editor {

std::vector<SegmentRow> segmentsIn(std::span<const motion::ZoomSegment> segments, TimeRange range,
                                   const std::string& held) {
  std::vector<SegmentRow> rows;
  std::unordered_map<std::string_view, int> repetitions;
  for (const auto& segment : segments) {
    const int repetition = repetitions[segment.id]++;
    if (!range.overlaps(segment.start, segment.end) && segment.id != held) continue;
    rows.push_back({.id = segment.id,
                    .repetition = repetition,
                    .start = segment.start,
                    .end = segment.end,
                    .level = segment.level,
                    .isEnabled = segment.enabled,
                    .isManual = segment.isManual});
  }
  return rows;
}

std::string segmentName(const SegmentRow& row) {
  return fmt::format("{}效果段 {} 到 {}，{:.1f}×{}", row.isManual ? "手动" : "自动",
                     playheadText(row.start), playheadText(row.end), row.level,
                     row.isEnabled ? "" : "，已停用");
}

QVariant SegmentModel::data(const QModelIndex& index, int role) const {
  const SegmentRow* const segment = row(index);
  if (segment == nullptr) return {};
  switch (role) {
    case idRole:
      return QString::fromStdString(segment->id);
    case startRole:
      return segment->start;
    case endRole:
      return segment->end;
    case levelTextRole:
      return QString::fromStdString(fmt::format("{:.1f}×", segment->level));
    case isEnabledRole:
      return segment->isEnabled;
    case isManualRole:
      return segment->isManual;
    case nameRole:
      return QString::fromStdString(segmentName(*segment));
    default:
      return {};
  }
}

QHash<int, QByteArray> SegmentModel::roleNames() const {
  return {{idRole, "segmentID"},
          {startRole, "start"},
          {endRole, "end"},
          {levelTextRole, "levelText"},
          {isEnabledRole, "isEnabled"},
          {isManualRole, "isManual"},
          {nameRole, "name"}};
}

}  // namespace vesk::editor
