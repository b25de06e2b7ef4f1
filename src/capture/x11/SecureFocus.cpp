#include "capture/x11/SecureFocus.h"

namespace vesk::capture::x11 {

void SecureFocus::focused(const Accessible& element, bool isPasswordField) {
  forget();
  if (isPasswordField) field_ = element;
}

void SecureFocus::unfocused(const Accessible& element) {
  if (field_ == element) forget();
}

void SecureFocus::windowActivated(const Accessible& window) {
  if (leftWindow_ == window) leftWindow_.reset();
}

void SecureFocus::windowDeactivated(const Accessible& window) {
  if (field_ && field_->application == window.application) leftWindow_ = window;
}

void SecureFocus::applicationEnded(const std::string& application) {
  if (field_ && field_->application == application) forget();
}

void SecureFocus::forget() {
  field_.reset();
  leftWindow_.reset();
}

}  // namespace vesk::capture::x11
