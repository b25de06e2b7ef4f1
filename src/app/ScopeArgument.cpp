#include "app/ScopeArgument.h"

#include <fmt/format.h>

#include <algorithm>
#include <variant>

#include "app/CommandLine.h"
#include "capture/Geometry.h"
#include "capture/ScopeGeometry.h"

namespace vesk::app {
namespace {

using package::CaptureScope;
using package::Rect;

constexpr std::string_view regionPrefix = "region:";
constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

struct InWords {
  std::string operator()(const CaptureScope::Display& display) const {
    return fmt::format("display({})", display.id);
  }
  std::string operator()(const CaptureScope::Window& window) const {
    return fmt::format("window({})", window.id);
  }
  std::string operator()(const CaptureScope::Region& region) const {
    const auto& rect = region.rect;
    return fmt::format("region({}, ({}, {}, {}, {}))", region.displayID, rect.x, rect.y, rect.width,
                       rect.height);
  }
};

}  // namespace

std::vector<std::string_view> piecesBetweenCommas(std::string_view text) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    const auto length = std::min(text.find(','), text.size());
    if (length > 0) pieces.push_back(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return pieces;
}

std::expected<std::optional<Rect>, std::string> regionArgument(std::string_view text) {
  if (!text.starts_with(regionPrefix)) return std::nullopt;
  std::vector<double> numbers;
  const auto pieces = piecesBetweenCommas(text.substr(regionPrefix.size()));
  for (const auto piece : pieces) {
    if (const auto number = parseNumber(trimmed(piece))) numbers.push_back(*number);
  }
  if (numbers.size() != 4 || pieces.size() != 4) {
    return std::unexpected("region 格式：region:x,y,w,h");
  }
  return Rect{.x = numbers[0], .y = numbers[1], .width = numbers[2], .height = numbers[3]};
}

CaptureScope scopeOf(const std::optional<Rect>& region, const capture::DisplayGeometry& geometry) {
  const auto fallback = capture::defaultDisplay(geometry);
  const auto fallbackID = fallback ? fallback->id : 0;
  if (!region) return {CaptureScope::Display{fallbackID}};
  const auto displays = geometry.displays();
  const auto onScreen = capture::flipped(*region, capture::primaryHeight(displays));
  const auto touched = std::ranges::find_if(displays, [&](const capture::Display& display) {
    return capture::intersects(display.frame, onScreen);
  });
  return {CaptureScope::Region{.displayID = touched == displays.end() ? fallbackID : touched->id,
                               .rect = *region}};
}

std::string inWords(const CaptureScope& scope) {
  return std::visit(InWords{}, scope.value);
}

}  // namespace vesk::app
