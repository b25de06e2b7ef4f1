#include "package/JsonText.h"

#include <utility>

namespace vesk::package {

namespace {

constexpr int deepestNesting = 512;

/// The length of a string's inside, up to its closing quote or the end of the text.
std::size_t stringLength(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && text[at] != '"') at += text[at] == '\\' ? 2 : 1;
  return at;
}

/// Counts brackets outside of strings; what else is wrong with the text is left to the parser.
bool nestsTooDeep(std::string_view text) {
  int depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    switch (text[at]) {
      case '"':
        at += 1 + stringLength(text.substr(at + 1));
        break;
      case '[':
      case '{':
        if (++depth > deepestNesting) return true;
        break;
      case ']':
      case '}':
        --depth;
        break;
      default:
        break;
    }
  }
  return false;
}

}  // namespace

std::optional<nlohmann::json> parseJson(std::string_view text) {
  // The parser takes a zero byte for the end of the text and would not see what follows.
  if (text.contains('\0') || nestsTooDeep(text)) return std::nullopt;
  auto value = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (value.is_discarded()) return std::nullopt;
  return value;
}

}  // namespace vesk::package
