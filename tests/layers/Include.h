#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vesk::layers {

/// An include directive of a source file.
struct Include {
  std::string path;       ///< what stands between the brackets or quotes
  bool isQuoted = false;  ///< "path", else <path>
  std::size_t line = 0;   ///< from 1
  bool operator==(const Include&) const = default;
};

/// The include directives of a text, in order. A directive behind // is a comment and none.
std::vector<Include> includesIn(std::string_view text);

}  // namespace vesk::layers
