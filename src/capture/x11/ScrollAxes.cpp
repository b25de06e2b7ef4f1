#include "capture/x11/ScrollAxes.h"

#include <utility>

namespace vesk::capture::x11 {

std::optional<ScrollSteps> stepsOfButton(std::uint32_t button) {
  switch (button) {
    case 4:
      return ScrollSteps{.down = -1};
    case 5:
      return ScrollSteps{.down = 1};
    case 6:
      return ScrollSteps{.right = -1};
    case 7:
      return ScrollSteps{.right = 1};
    default:
      return std::nullopt;
  }
}

ScrollAxes::ScrollAxes(std::span<const ScrollAxis> axes) {
  for (const auto& axis : axes) {
    if (axis.increment != 0) axes_.emplace(axis.valuator, Axis{.axis = axis});
  }
}

std::optional<ScrollSteps> ScrollAxes::steps(std::span<const ValuatorValue> values) {
  ScrollSteps steps;
  for (const auto& [valuator, value] : values) {
    const auto found = axes_.find(valuator);
    if (found == axes_.end()) continue;
    const auto distance = advance(found->second, value);
    if (!distance) continue;
    const auto& axis = found->second.axis;
    (axis.isHorizontal ? steps.right : steps.down) += *distance / axis.increment;
  }
  if (steps == ScrollSteps{}) return std::nullopt;
  return steps;
}

std::optional<double> ScrollAxes::advance(Axis& axis, double value) {
  if (!axis.axis.isAbsolute) return value;
  const auto before = std::exchange(axis.position, value);
  if (!before) return std::nullopt;
  return value - *before;
}

}  // namespace vesk::capture::x11
