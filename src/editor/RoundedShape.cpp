#include "editor/RoundedShape.h"

#include <algorithm>
#include <cmath>

namespace vesk::editor {
namespace {

/// How far beyond the rounding's centre a coordinate lies, towards the nearer edge.
double beyondRounding(double coordinate, double side, double radius) {
  return std::max(std::abs(coordinate - side / 2) - (side / 2 - radius), 0.0);
}

}  // namespace

bool RoundedShape::contains(const QPointF& point) const {
  const double rounding = std::min({radius, size.width() / 2, size.height() / 2});
  return std::hypot(beyondRounding(point.x(), size.width(), rounding),
                    beyondRounding(point.y(), size.height(), rounding)) <= rounding;
}

}  // namespace vesk::editor
