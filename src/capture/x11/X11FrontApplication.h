#pragma once

#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "capture/BackendError.h"
#include "capture/FrontApplication.h"
#include "capture/Listening.h"
#include "capture/x11/Connection.h"
#include "capture/x11/EventThread.h"

namespace vesk::capture::x11 {

/// The application of the window that the window manager calls the active one. While there is none,
/// the one before stays in front: such moments come whenever the user goes from one to another.
class X11FrontApplication final : public FrontApplication {
 public:
  /// @param display as for `Connection::open`.
  static std::expected<std::unique_ptr<X11FrontApplication>, BackendError> open(
      const std::string& display = {});

  Name name() const override;
  std::expected<std::unique_ptr<Listening>, BackendError> listen(Callback callback) override;

 private:
  explicit X11FrontApplication(Connection connection);
  void receive(const Event& event);
  /// Whether some window is active.
  bool readName();

  Connection connection_;
  std::uint32_t activeWindow_;  ///< the name of the property
  Listeners<const Name&> listeners_;
  mutable std::mutex mutex_;  ///< guards `name_`
  Name name_;
  std::optional<EventThread> thread_;  ///< ends before what it uses
};

}  // namespace vesk::capture::x11
