#include "editor/MarkerModel.h"

#include <fmt/format.h>

#include "editor/TimeText.h"

namespace vesk::editor {
namespace {

using Kind = TimelineMarker::Kind;

}  // namespace

std::string_view markerHelp(const MarkerRow& row) {
  switch (row.marker.kind) {
    case Kind::zoomIn:
      return "手动放大标记";
    case Kind::zoomOut:
      return "手动还原标记";
    default:
      return row.isAttached ? "已挂效果 · 双击移除" : "素材点 · 双击提升为效果";
  }
}

std::string markerName(const MarkerRow& row) {
  const auto time = playheadText(row.marker.time);
  const std::string_view help = markerHelp(row);
  if (!row.marker.isClick()) return fmt::format("{} {}", time, help);
  const auto* const kind = row.marker.kind == Kind::doubleClick ? "双击" : "单击";
  return fmt::format("{} {}，{}", time, kind, help);
}

QVariant MarkerModel::data(const QModelIndex& index, int role) const {
  const MarkerRow* const found = row(index);
  if (found == nullptr) return {};
  const TimelineMarker& marker = found->marker;
  switch (role) {
    case numberRole:
      return static_cast<qlonglong>(found->number);
    case timeRole:
      return marker.time;
    case isClickRole:
      return marker.isClick();
    case isDoubleClickRole:
      return marker.kind == Kind::doubleClick;
    case isZoomInRole:
      return marker.kind == Kind::zoomIn;
    case isAttachedRole:
      return found->isAttached;
    case helpRole: {
      const std::string_view help = markerHelp(*found);
      return QString::fromUtf8(help.data(), static_cast<qsizetype>(help.size()));
    }
    case nameRole:
      return QString::fromStdString(markerName(*found));
    default:
      return {};
  }
}

QHash<int, QByteArray> MarkerModel::roleNames() const {
  return {{numberRole, "number"},     {timeRole, "time"},
          {isClickRole, "isClick"},   {isDoubleClickRole, "isDoubleClick"},
          {isZoomInRole, "isZoomIn"}, {isAttachedRole, "isAttached"},
          {helpRole, "help"},         {nameRole, "name"}};
}

}  // namespace vesk::editor
