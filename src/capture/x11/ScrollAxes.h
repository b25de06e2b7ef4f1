#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>

namespace vesk::capture::x11 {

/// What turns or slides to scroll on a device.
struct ScrollAxis {
  int valuator = 0;  ///< its number on the device
  bool isHorizontal = false;
  bool isAbsolute = false;  ///< tells where it stands, not how far it went
  double increment = 1;     ///< of one step down or to the right; below 0 where the axis runs back
  bool operator==(const ScrollAxis&) const = default;
};

/// A device's axis and what an event says of it.
struct ValuatorValue {
  int valuator = 0;
  double value = 0;
};

/// Steps down and to the right.
struct ScrollSteps {
  double right = 0;
  double down = 0;
  bool operator==(const ScrollSteps&) const = default;
};

/// The steps of the mouse wheel that a button of the display server stands for, nothing for a
/// button that is one.
std::optional<ScrollSteps> stepsOfButton(std::uint32_t button);

/// Turns what one device tells of its axes into steps. The first word of an absolute axis tells
/// only where it stands.
class ScrollAxes {
 public:
  explicit ScrollAxes(std::span<const ScrollAxis> axes);

  bool isEmpty() const { return axes_.empty(); }

  /// Nothing for an event that does not scroll.
  std::optional<ScrollSteps> steps(std::span<const ValuatorValue> values);

 private:
  struct Axis {
    ScrollAxis axis;
    std::optional<double> position;
  };

  static std::optional<double> advance(Axis& axis, double value);

  std::map<int, Axis> axes_;  ///< by valuator
};

}  // namespace vesk::capture::x11
