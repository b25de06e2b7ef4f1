#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// What any text of the repository keeps to. A rule gives the reason of a breach, or nothing.
namespace vesk::layers {

/// A source file of this many lines holds more than one concept.
inline constexpr std::size_t longestFile = 500;

/// A source file stays under longestFile lines.
std::optional<std::string> lengthBreach(std::string_view text);

/// A line refers to nothing outside the repository by number, leaves no work for later and
/// switches no test off.
std::optional<std::string> wordingBreach(std::string_view line);

}  // namespace vesk::layers
