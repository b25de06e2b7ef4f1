#pragma once

#include <cstddef>
#include <string>

namespace vesk::app {

/// The length of a UUID's text.
inline constexpr std::size_t freshNameLength = 36;

/// A random UUID (RFC 9562, version 4), in lower case.
std::string freshName();

}  // namespace vesk::app
