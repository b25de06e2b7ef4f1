#pragma once

#include <QObject>
#include <QPointF>
#include <QSizeF>

namespace vesk::editor {

/// A rectangle with round corners, from the origin of whatever bears it: the part of an item by
/// which the pointer can take hold of it (see Item::containmentMask). With a radius of half its
/// sides it is a disc. In points. Main thread.
class RoundedShape : public QObject {
  Q_OBJECT
  Q_PROPERTY(QSizeF size MEMBER size)
  Q_PROPERTY(double radius MEMBER radius)

 public:
  using QObject::QObject;

  Q_INVOKABLE bool contains(const QPointF& point) const;

  QSizeF size;
  double radius = 0;
};

}  // namespace vesk::editor
