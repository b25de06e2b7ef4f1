#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "package/StyleSettings.h"

namespace vesk::editor {

/// What the editor page shows and how, beyond the document. Main thread.
class EditorUIState : public QObject {
  Q_OBJECT
  /// Empty when no segment is selected. May outlive its segment.
  Q_PROPERTY(QString selectedSegmentID READ selectedSegmentID WRITE setSelectedSegmentID NOTIFY
                 selectedSegmentIDChanged)
  Q_PROPERTY(double pxPerSec READ pxPerSec WRITE setPxPerSec NOTIFY pxPerSecChanged)

 public:
  /// The inspector's panels, in their order.
  enum class Category { cursor, lens, motion, audio, pip, frame, segments, source };
  Q_ENUM(Category)
  static constexpr std::array allCategories{Category::cursor,   Category::lens,  Category::motion,
                                            Category::audio,    Category::pip,   Category::frame,
                                            Category::segments, Category::source};
  /// The category's raw value, which is its panel's title.
  static std::string_view rawValue(Category category);
  static std::optional<Category> category(std::string_view raw);

  using QObject::QObject;

  QString selectedSegmentID() const { return selectedSegmentID_; }
  void setSelectedSegmentID(const QString& id);

  std::optional<Category> openCategory() const { return openCategory_; }
  void setOpenCategory(std::optional<Category> category);

  /// Scale of the timeline, in points a second.
  double pxPerSec() const { return pxPerSec_; }
  void setPxPerSec(double value);

  /// The camera's window as the page handles it; what it is drawn with follows (see EditorView).
  const package::PiPSettings& pip() const { return pip_; }
  void setPip(const package::PiPSettings& pip);

 Q_SIGNALS:
  void selectedSegmentIDChanged();
  void openCategoryChanged();
  void pxPerSecChanged();
  void pipChanged();

 private:
  QString selectedSegmentID_;
  std::optional<Category> openCategory_;
  double pxPerSec_ = 24.0;
  package::PiPSettings pip_;
};

}  // namespace vesk::editor
