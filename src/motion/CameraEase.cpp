#include "motion/CameraEase.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vesk::motion {
namespace {

struct Label {
  CameraEase ease;
  std::string_view rawValue;
  std::string_view helpLine;
};

constexpr std::array labels{
    Label{CameraEase::smooth, "平稳", "起收对称，什么场合都不出错"},
    Label{CameraEase::snappy, "干脆", "起步快、收尾长，短推镜最利落"},
    Label{CameraEase::cinema, "电影", "起收都慢，大幅运镜显得从容"},
    Label{CameraEase::springy, "轻弹", "到位时轻微回弹，教学段别用"},
    Label{CameraEase::linear, "匀速", "匀速，机械感"},
};

const Label& label(CameraEase ease) {
  return *std::ranges::find(labels, ease, &Label::ease);
}

/// A cubic Bézier from (0, 0) to (1, 1) whose second control point lies on y = 1.
struct Bezier {
  double x1;
  double y1;
  double x2;

  double x(double s) const { return component(s, x1, x2); }
  double y(double s) const { return component(s, y1, 1); }
  double slopeOfX(double s) const {
    const double r = 1 - s;
    return 3 * r * r * x1 + 6 * r * s * (x2 - x1) + 3 * s * s * (1 - x2);
  }

 private:
  static double component(double s, double first, double second) {
    const double r = 1 - s;
    return 3 * r * r * s * first + 3 * r * s * s * second + s * s * s;
  }
};

/// y of the point of the curve whose x is t. A fixed count of steps keeps the result a pure
/// function of t without a tolerance to tune; eight reach double precision where the curve is not
/// flat.
double solve(const Bezier& curve, double t) {
  constexpr int newtonSteps = 8;
  constexpr double flat = 1e-9;
  double s = t;
  for (int step = 0; step < newtonSteps; ++step) {
    const double slope = curve.slopeOfX(s);
    if (std::abs(slope) < flat) {
      break;
    }
    s = std::clamp(s - (curve.x(s) - t) / slope, 0.0, 1.0);
  }
  return curve.y(s);
}

double backOut(double t) {
  constexpr double cubic = 2.28;
  constexpr double quadratic = 1.28;
  const double u = t - 1;
  return 1 + cubic * (u * u * u) + quadratic * (u * u);
}

}  // namespace

std::string_view rawValue(CameraEase ease) {
  return label(ease).rawValue;
}

std::optional<CameraEase> cameraEase(std::string_view raw) {
  const auto* const found = std::ranges::find(labels, raw, &Label::rawValue);
  return found == labels.end() ? std::nullopt : std::optional(found->ease);
}

std::string_view helpLine(CameraEase ease) {
  return label(ease).helpLine;
}

double value(CameraEase ease, double t) {
  if (t <= 0) {
    return 0;
  }
  if (t > 1) {
    return 1;
  }
  switch (ease) {
    case CameraEase::smooth:
      return solve({.x1 = 0.65, .y1 = 0, .x2 = 0.35}, t);
    case CameraEase::snappy:
      return solve({.x1 = 0.16, .y1 = 0.9, .x2 = 0.2}, t);
    case CameraEase::cinema:
      return solve({.x1 = 0.83, .y1 = 0, .x2 = 0.17}, t);
    case CameraEase::springy:
      return backOut(t);
    case CameraEase::linear:
      return solve({.x1 = 0, .y1 = 0, .x2 = 1}, t);
  }
  std::unreachable();
}

}  // namespace vesk::motion
