#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

namespace vesk::package {

/// The value of a JSON text, or nothing when it is none, holds a number beyond a double or nests
/// deeper than 512 levels: no file of ours comes near that, and a text of brackets alone would take
/// a hundred times its size in memory.
std::optional<nlohmann::json> parseJson(std::string_view text);

}  // namespace vesk::package
