#pragma once

#include <optional>
#include <string>

namespace vesk::capture::x11 {

/// An element of a user interface, as the accessibility bus knows it.
struct Accessible {
  std::string application;  ///< its name on the bus
  std::string path;
  bool operator==(const Accessible&) const = default;
};

/// Whether the user is in a password field, by what applications tell of the keyboard's focus. An
/// application need not tell that a field has lost the keyboard to another one's window, nor that
/// it has gone.
class SecureFocus {
 public:
  bool isInPasswordField() const { return field_ && !leftWindow_; }
  /// The password field that has the focus of its window, though the user may be elsewhere.
  const std::optional<Accessible>& field() const { return field_; }

  void focused(const Accessible& element, bool isPasswordField);
  void unfocused(const Accessible& element);
  void windowActivated(const Accessible& window);
  void windowDeactivated(const Accessible& window);
  void applicationEnded(const std::string& application);

 private:
  void forget();

  std::optional<Accessible> field_;
  std::optional<Accessible> leftWindow_;  ///< the field's window while the user is elsewhere
};

}  // namespace vesk::capture::x11
