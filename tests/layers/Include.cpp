#include "layers/Include.h"

#include <regex>
#include <sstream>

namespace vesk::layers {

std::vector<Include> includesIn(std::string_view text) {
  static const std::regex directive{R"re(^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>))re"};
  std::vector<Include> includes;
  std::istringstream stream{std::string{text}};
  std::string line;
  for (std::size_t number = 1; std::getline(stream, line); ++number) {
    std::smatch match;
    if (!std::regex_search(line, match, directive)) continue;
    const bool isQuoted = match[1].matched;
    includes.push_back({.path = match[isQuoted ? 1 : 2], .isQuoted = isQuoted, .line = number});
  }
  return includes;
}

}  // namespace vesk::layers
