#pragma once

#include <string_view>

namespace vesk::capture {

/// What this program calls itself towards the desktop (the class of its windows).
inline constexpr std::string_view ownApplicationID = "vesk";

}  // namespace vesk::capture
