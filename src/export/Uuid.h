#pragma once

#include <cstddef>
#include <string>

namespace vesk::exporting {

/// The length of a UUID's text.
inline constexpr std::size_t uuidLength = 36;

/// A random UUID (RFC 9562, version 4), for the name of a temporary file.
std::string newUuid();

}  // namespace vesk::exporting
