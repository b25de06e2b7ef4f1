#include "capture/ShortcutSettings.h"

#include <string_view>
#include <utility>

#include "package/Log.h"

namespace vesk::capture {
namespace {

constexpr std::string_view zoomInKey = "shortcut.zoomIn";
constexpr std::string_view zoomOutKey = "shortcut.zoomOut";
constexpr std::string_view manualMarksKey = "shortcut.manualMarksEnabled";

Shortcut stored(const package::UserDefaults& defaults, std::string_view key, Shortcut otherwise) {
  return decodeShortcut(defaults.string(key).value_or("")).value_or(otherwise);
}

void report(const std::expected<void, package::PackageError>& saved) {
  if (saved) return;
  log(package::LogCategory::hotkey).error("shortcuts not saved: {}", saved.error().message);
}

}  // namespace

ShortcutSettings::ShortcutSettings(package::UserDefaults& defaults)
    : defaults_{defaults}, values_{load(defaults)} {}

void ShortcutSettings::setZoomIn(const Shortcut& shortcut) {
  auto values = values_;
  values.zoomIn = shortcut;
  change(values);
}

void ShortcutSettings::setZoomOut(const Shortcut& shortcut) {
  auto values = values_;
  values.zoomOut = shortcut;
  change(values);
}

void ShortcutSettings::setManualMarksEnabled(bool isEnabled) {
  auto values = values_;
  values.manualMarksEnabled = isEnabled;
  change(values);
}

void ShortcutSettings::restoreDefaultShortcuts() {
  change({.manualMarksEnabled = values_.manualMarksEnabled});
}

package::ChangeSignal::Subscription ShortcutSettings::onChange(
    package::ChangeSignal::Observer observer) {
  return changed_.subscribe(std::move(observer));
}

ShortcutSettings::Values ShortcutSettings::load(const package::UserDefaults& defaults) {
  return {.zoomIn = stored(defaults, zoomInKey, defaultZoomIn),
          .zoomOut = stored(defaults, zoomOutKey, defaultZoomOut),
          .manualMarksEnabled = defaults.boolean(manualMarksKey).value_or(true)};
}

void ShortcutSettings::change(const Values& values) {
  if (values == values_) return;
  values_ = values;
  save();
  changed_.notify();
}

void ShortcutSettings::save() {
  report(defaults_.set(zoomInKey, encodeShortcut(values_.zoomIn)));
  report(defaults_.set(zoomOutKey, encodeShortcut(values_.zoomOut)));
  report(defaults_.set(manualMarksKey, values_.manualMarksEnabled));
}

}  // namespace vesk::capture
