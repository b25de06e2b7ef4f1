#pragma once

#include <string_view>

namespace vesk::package {

/// A UTF-8 text without a character at its end that lacks some of its bytes, as the end of a
/// growing file or of a piece of one may leave it. Whether the rest is valid is not looked at.
std::string_view withoutCutCharacter(std::string_view text);

}  // namespace vesk::package
