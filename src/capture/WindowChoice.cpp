#include "capture/WindowChoice.h"

#include <algorithm>
#include <tuple>

namespace vesk::capture {
namespace {

constexpr double smallestWidth = 120;
constexpr double smallestHeight = 90;

bool isChoice(const ScreenWindow& window, std::string_view ownApplicationID) {
  if (window.frame.width < smallestWidth || window.frame.height < smallestHeight) return false;
  if (!window.owner) return false;
  return ownApplicationID.empty() || window.owner->applicationID != ownApplicationID;
}

WindowChoice choiceOf(const ScreenWindow& window) {
  const auto& appName = window.owner->applicationName;
  const bool hasTitle = window.title && !window.title->empty();
  return {.id = window.id,
          .title = hasTitle ? *window.title : appName,
          .appName = appName,
          .frame = window.frame,
          .pid = window.owner->processID};
}

}  // namespace

std::vector<WindowChoice> windowChoices(const std::vector<ScreenWindow>& windows,
                                        std::string_view ownApplicationID) {
  std::vector<WindowChoice> choices;
  for (const auto& window : windows) {
    if (isChoice(window, ownApplicationID)) choices.push_back(choiceOf(window));
  }
  std::ranges::stable_sort(choices, {}, [](const WindowChoice& choice) {
    return std::tie(choice.appName, choice.title);
  });
  return choices;
}

}  // namespace vesk::capture
