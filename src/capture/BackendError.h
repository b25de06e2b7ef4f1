#pragma once

#include <string>

namespace vesk::capture {

/// Why something of the machine cannot be used. `message` is a clause in the user's language
/// without its full stop.
struct BackendError {
  std::string message;
  bool operator==(const BackendError&) const = default;
};

}  // namespace vesk::capture
