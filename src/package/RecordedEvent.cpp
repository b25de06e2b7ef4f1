#include "package/RecordedEvent.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "package/JsonFields.h"

namespace vesk::package {

namespace {

// In the order of the enumerations, so that a case's number is its place here.
constexpr std::array<std::string_view, recordedEventKinds.size()> kindNames{
    "click", "up", "move", "scroll", "key", "appChange", "gap", "zoomIn", "zoomOut"};
constexpr std::array<std::string_view, 3> buttonNames{"left", "right", "other"};

static_assert(static_cast<std::size_t>(RecordedEvent::Button::other) + 1 == buttonNames.size());

template <typename Case, std::size_t count>
std::optional<Case> caseNamed(const std::array<std::string_view, count>& names,
                              std::string_view raw) {
  const auto* found = std::ranges::find(names, raw);
  if (found == names.end()) return std::nullopt;
  return static_cast<Case>(found - names.begin());
}

}  // namespace

std::string_view rawValue(RecordedEvent::Kind kind) {
  return kindNames.at(static_cast<std::size_t>(kind));
}

std::string_view rawValue(RecordedEvent::Button button) {
  return buttonNames.at(static_cast<std::size_t>(button));
}

std::optional<RecordedEvent::Kind> recordedEventKind(std::string_view raw) {
  return caseNamed<RecordedEvent::Kind>(kindNames, raw);
}

std::optional<RecordedEvent::Button> recordedEventButton(std::string_view raw) {
  return caseNamed<RecordedEvent::Button>(buttonNames, raw);
}

std::string encodeRecordedEvent(const RecordedEvent& event) {
  nlohmann::json json{{"t", event.t}, {"type", rawValue(event.type)}};
  if (event.button) json["button"] = rawValue(*event.button);
  putIfPresent(json, "x", event.x);
  putIfPresent(json, "y", event.y);
  putIfPresent(json, "scrollDX", event.scrollDX);
  putIfPresent(json, "scrollDY", event.scrollDY);
  putIfPresent(json, "clickCount", event.clickCount);
  putIfPresent(json, "combo", event.combo);
  putIfPresent(json, "app", event.app);
  putIfPresent(json, "reason", event.reason);
  return json.dump(-1, ' ', /*ensure_ascii=*/false, nlohmann::json::error_handler_t::replace);
}

}  // namespace vesk::package
