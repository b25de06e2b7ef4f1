#pragma once

#include <string>

namespace vesk::package {

/// Why a package, or a file of it, could not be read or written. `message` is a sentence in the
/// user's language that names the file and the cause.
struct PackageError {
  enum class Kind { fileUnreadable, fileUnwritable, notUtf8, malformed, outOfRange };
  Kind kind = Kind::malformed;
  std::string message;
  bool operator==(const PackageError&) const = default;
};

}  // namespace vesk::package
