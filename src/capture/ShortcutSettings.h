#pragma once

#include "capture/Shortcut.h"
#include "package/ChangeSignal.h"
#include "package/UserDefaults.h"

namespace vesk::capture {

/// The key combinations of the manual camera marks and whether there are such marks at all, kept in
/// the user's settings under "shortcut.zoomIn", "shortcut.zoomOut" and
/// "shortcut.manualMarksEnabled". What is missing or unreadable there has its default. To be used
/// on the main thread.
class ShortcutSettings {
 public:
  /// @param defaults must outlive the settings.
  explicit ShortcutSettings(package::UserDefaults& defaults);

  const Shortcut& zoomIn() const { return values_.zoomIn; }
  const Shortcut& zoomOut() const { return values_.zoomOut; }
  bool manualMarksEnabled() const { return values_.manualMarksEnabled; }

  // Each change writes all three values. When that fails, which only the log tells, the change
  // holds until the end of the process.
  void setZoomIn(const Shortcut& shortcut);
  void setZoomOut(const Shortcut& shortcut);
  void setManualMarksEnabled(bool isEnabled);

  /// Gives both combinations their defaults; whether marks are enabled stays.
  void restoreDefaultShortcuts();

  /// Observes the three values.
  package::ChangeSignal::Subscription onChange(package::ChangeSignal::Observer observer);

 private:
  struct Values {
    Shortcut zoomIn = defaultZoomIn;
    Shortcut zoomOut = defaultZoomOut;
    bool manualMarksEnabled = true;
    bool operator==(const Values&) const = default;
  };

  static Values load(const package::UserDefaults& defaults);
  void change(const Values& values);
  void save();

  package::UserDefaults& defaults_;
  Values values_;
  package::ChangeSignal changed_;
};

}  // namespace vesk::capture
