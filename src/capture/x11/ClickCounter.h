#pragma once

#include <cstdint>
#include <optional>

#include "capture/Geometry.h"
#include "package/RecordedEvent.h"

namespace vesk::capture::x11 {

/// Which presses belong together.
struct DoubleClick {
  double interval = 0.4;  ///< seconds from one to the next, at most
  double distance = 5;    ///< pixels in x and in y, at most
  bool operator==(const DoubleClick&) const = default;
};

/// Counts the presses of a mouse's buttons: 1 for a single click, 2 for a double click and so on.
class ClickCounter {
 public:
  using Button = package::RecordedEvent::Button;

  explicit ClickCounter(DoubleClick limits) : limits_{limits} {}

  /// @param time seconds; not before that of the press before.
  std::int64_t press(Button button, double time, const ScreenPoint& at);

 private:
  struct Press {
    Button button;
    double time;
    ScreenPoint at;
  };

  bool continues(const Press& press) const;

  DoubleClick limits_;
  std::optional<Press> last_;
  std::int64_t count_ = 0;
};

}  // namespace vesk::capture::x11
