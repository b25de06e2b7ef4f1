#pragma once

#include <expected>
#include <memory>

#include "capture/BackendError.h"
#include "capture/x11/Bell.h"
#include "capture/x11/SecureFocus.h"

struct sd_bus;
struct sd_bus_message;
struct sd_bus_slot;

namespace vesk::capture::x11 {

/// Hears on the session's accessibility bus (AT-SPI) which element of a user interface has the
/// keyboard. While it lives, applications are asked to be accessible. To be used by one thread.
class AccessibilityBus {
 public:
  /// May wait for the bus to start. The message of a failure is for the log.
  static std::expected<std::unique_ptr<AccessibilityBus>, BackendError> open();
  AccessibilityBus(const AccessibilityBus&) = delete;
  AccessibilityBus& operator=(const AccessibilityBus&) = delete;
  ~AccessibilityBus();

  bool isInPasswordField() const { return focus_.isInPasswordField(); }

  /// Waits for news or the bell, and takes in all that has come. False once the bus has gone.
  bool process(const Bell& bell);

 private:
  struct Unreference {
    void operator()(sd_bus* bus) const noexcept;
    void operator()(sd_bus_slot* slot) const noexcept;
  };
  using Bus = std::unique_ptr<sd_bus, Unreference>;
  struct Callback;
  using Member = void (AccessibilityBus::*)(sd_bus_message& message);

  AccessibilityBus(Bus session, Bus bus);

  static Bus openSession();
  static Bus openBus(sd_bus& session);
  void makeApplicationsAccessible();
  bool registerEvents();
  template <Member member>
  bool match(const char* rule);

  void focusChanged(sd_bus_message& event);
  void windowActivated(sd_bus_message& event);
  void windowDeactivated(sd_bus_message& event);
  void windowClosed(sd_bus_message& event);
  void ownerChanged(sd_bus_message& event);
  void askRole(const Accessible& element);
  void roleTold(sd_bus_message& answer);

  Bus session_;
  Bus bus_;
  bool hasEnabled_ = false;  ///< whether applications were not accessible before
  SecureFocus focus_;
  Accessible asked_;
  std::unique_ptr<sd_bus_slot, Unreference> question_;  ///< what `asked_` is; its end forgets it
};

}  // namespace vesk::capture::x11
