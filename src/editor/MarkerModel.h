#pragma once

#include <QHash>
#include <cstddef>
#include <string>
#include <string_view>

#include "editor/RowsInView.h"
#include "editor/TimelineMarker.h"

namespace vesk::editor {

/// A marker in view.
struct MarkerRow {
  std::size_t number = 0;  ///< among all markers of the recording
  TimelineMarker marker;
  bool isAttached = false;  ///< lies within a segment

  std::size_t key() const { return number; }
  bool operator==(const MarkerRow&) const = default;
};

/// What a marker is and what can be done with it, in words.
std::string_view markerHelp(const MarkerRow& row);
/// The same with what it is and when, for those who do not see it.
std::string markerName(const MarkerRow& row);

/// The markers in view.
class MarkerModel : public RowsInView<MarkerRow> {
  Q_OBJECT

 public:
  enum Role {
    numberRole = Qt::UserRole,
    timeRole,
    isClickRole,
    isDoubleClickRole,
    isZoomInRole,
    isAttachedRole,
    helpRole,
    nameRole
  };

  using RowsInView::RowsInView;

  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;
};

}  // namespace vesk::editor
