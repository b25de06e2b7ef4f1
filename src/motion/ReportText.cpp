#include "motion/ReportText.h"

#include <algorithm>

namespace vesk::motion {

std::string ruler() {
  std::string line;
  for (int i = 0; i < 62; ++i) {
    line += "─";
  }
  return line;
}

std::string padded(std::string_view text, std::size_t width) {
  const auto startsCharacter = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  };
  const auto characters =
      static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
  std::string result(text);
  result.append(width - std::min(width, characters), ' ');
  return result;
}

}  // namespace vesk::motion
