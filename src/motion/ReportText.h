#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace vesk::motion {

/// The separator of the textual reports: 62 characters "─".
std::string ruler();

/// The text, filled up with blanks behind it to `width` characters. Characters are counted, not
/// columns of a terminal, where a Chinese character takes two.
std::string padded(std::string_view text, std::size_t width);

/// Writes behind what the text holds.
template <typename... Arguments>
void append(std::string& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
}

}  // namespace vesk::motion
