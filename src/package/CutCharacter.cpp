#include "package/CutCharacter.h"

#include <algorithm>
#include <cstddef>

namespace vesk::package {

std::string_view withoutCutCharacter(std::string_view text) {
  constexpr std::size_t longestCharacter = 4;
  const std::size_t window = std::min(text.size(), longestCharacter - 1);
  for (std::size_t length = 1; length <= window; ++length) {
    const auto byte = static_cast<unsigned char>(text[text.size() - length]);
    const bool continues = (byte & 0xC0U) == 0x80U;
    if (continues) continue;
    const std::size_t needed = byte >= 0xF0U ? 4 : byte >= 0xE0U ? 3 : byte >= 0xC2U ? 2 : 1;
    const bool isCut = byte <= 0xF4U && needed > length;
    return isCut ? text.substr(0, text.size() - length) : text;
  }
  return text;
}

}  // namespace vesk::package
