#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "capture/BackendError.h"
#include "capture/Listening.h"

namespace vesk::capture {

/// The application whose window has the keyboard.
class FrontApplication {
 public:
  using Name =
      std::optional<std::string>;  ///< nothing when no application is in front or it has none
  using Callback = std::function<void(const Name&)>;

  virtual ~FrontApplication() = default;

  /// As the user knows it. Any thread; does not wait.
  virtual Name name() const = 0;

  /// Calls back on a thread of its own with the name of each application that comes to the front,
  /// perhaps with the same name twice in a row.
  virtual std::expected<std::unique_ptr<Listening>, BackendError> listen(Callback callback) = 0;
};

}  // namespace vesk::capture
