#pragma once

#include <string>
#include <string_view>

namespace vesk::capture {

/// A UTF-8 text in upper case, in whatever script; "ß" becomes "SS". Bytes that are no UTF-8 stay
/// as they are. Does not depend on the process's locale.
std::string upperCased(std::string_view text);

}  // namespace vesk::capture
