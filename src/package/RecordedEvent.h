#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "package/OptionalText.h"

namespace vesk::package {

/// One logged input event. Which fields are set beside `t` and `type` depends on the kind.
struct RecordedEvent {
  enum class Kind : std::uint8_t {
    click,
    up,
    move,
    scroll,
    key,
    appChange,
    gap,
    zoomIn,
    zoomOut,
  };
  enum class Button : std::uint8_t { left, right, other };

  double t = 0;  ///< seconds since the first video frame
  Kind type = Kind::move;
  std::optional<Button> button;
  std::optional<double> x;  ///< normalised, 0 left … 1 right
  std::optional<double> y;  ///< normalised, 0 top … 1 bottom
  std::optional<double> scrollDX;
  std::optional<double> scrollDY;
  std::optional<std::int64_t> clickCount;
  OptionalText combo;   ///< the key press in words
  OptionalText app;     ///< name of the frontmost application
  OptionalText reason;  ///< why a gap begins or ends
  bool operator==(const RecordedEvent&) const = default;
};

inline constexpr std::array recordedEventKinds{
    RecordedEvent::Kind::click,  RecordedEvent::Kind::up,     RecordedEvent::Kind::move,
    RecordedEvent::Kind::scroll, RecordedEvent::Kind::key,    RecordedEvent::Kind::appChange,
    RecordedEvent::Kind::gap,    RecordedEvent::Kind::zoomIn, RecordedEvent::Kind::zoomOut};

std::string_view rawValue(RecordedEvent::Kind kind);
std::string_view rawValue(RecordedEvent::Button button);
std::optional<RecordedEvent::Kind> recordedEventKind(std::string_view raw);
std::optional<RecordedEvent::Button> recordedEventButton(std::string_view raw);

/// The event as one compact JSON object without a line end; absent fields are left out.
std::string encodeRecordedEvent(const RecordedEvent& event);

}  // namespace vesk::package
