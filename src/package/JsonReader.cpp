#include "package/JsonReader.h"

#include <nlohmann/json.hpp>

#include "package/JsonFields.h"

namespace vesk::package {

namespace {

void appendUtf8(std::string& text, std::uint32_t character) {
  const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0U | (character >> 6U));
    append(0x80U | (character & 0x3FU));
  } else if (character < 0x10000) {
    append(0xE0U | (character >> 12U));
    append(0x80U | ((character >> 6U) & 0x3FU));
    append(0x80U | (character & 0x3FU));
  } else {
    append(0xF0U | (character >> 18U));
    append(0x80U | ((character >> 12U) & 0x3FU));
    append(0x80U | ((character >> 6U) & 0x3FU));
    append(0x80U | (character & 0x3FU));
  }
}

bool isHighSurrogate(std::uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(std::uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

}  // namespace

bool JsonReader::readInteger(std::int64_t& value) {
  skipSpace();
  const char* const begin = at_;
  double number = 0;
  if (!readNumber(number)) return false;
  // Beyond 2^53 a double holds not every integer, so plain digits are read as what they are.
  const auto [rest, error] = std::from_chars(begin, at_, value);
  if (rest == at_) return error == std::errc{};
  const auto integer = integerFrom(number);
  value = integer.value_or(0);
  return integer.has_value();
}

bool JsonReader::skipValue(int depth) {
  skipSpace();
  std::string_view text;
  double number = 0;
  switch (*at_) {
    case '"':
      return readString(text);
    case '{':
      return depth < deepestNesting && skipObject(depth + 1);
    case '[':
      return depth < deepestNesting && skipArray(depth + 1);
    case 't':
      return takeWord("true");
    case 'f':
      return takeWord("false");
    case 'n':
      return takeWord("null");
    default:
      return readNumber(number);
  }
}

bool JsonReader::skipArray(int depth) {
  take('[');
  if (take(']')) return true;
  do {
    if (!skipValue(depth)) return false;
  } while (take(','));
  return take(']');
}

bool JsonReader::skipObject(int depth) {
  take('{');
  if (take('}')) return true;
  std::string_view key;
  do {
    if (!readString(key) || !take(':') || !skipValue(depth)) return false;
  } while (take(','));
  return take('}');
}

bool JsonReader::convertExtremeNumber(std::string_view number, double& value) {
  // The conversion reports a number too large for a double and one too small alike, but the
  // latter is a valid zero.
  const auto json = nlohmann::json::parse(number, nullptr, /*allow_exceptions=*/false);
  if (!json.is_number()) return false;
  value = json.get<double>();
  return true;
}

bool JsonReader::readEscapedString(std::string_view& value) {
  unescaped_ = value;
  while (*at_ != '"') {
    if (isPlain(*at_)) {
      unescaped_ += *at_++;
    } else if (*at_ != '\\' || !readEscape()) {
      return false;
    }
  }
  ++at_;
  value = unescaped_;
  return true;
}

bool JsonReader::readEscape() {
  constexpr std::string_view letters = "\"\\/bfnrt";
  constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
  const char letter = at_[1];
  if (letter == 'u') return readUnicodeEscape();
  const std::size_t index = letters.find(letter);
  if (index == std::string_view::npos) return false;
  unescaped_ += meanings[index];
  at_ += 2;
  return true;
}

bool JsonReader::readUnicodeEscape() {
  std::uint32_t character = 0;
  if (!readCodeUnit(character) || isLowSurrogate(character)) return false;
  if (isHighSurrogate(character)) {
    std::uint32_t low = 0;
    if (!readCodeUnit(low) || !isLowSurrogate(low)) return false;
    character = 0x10000 + ((character - 0xD800) << 10U) + (low - 0xDC00);
  }
  appendUtf8(unescaped_, character);
  return true;
}

bool JsonReader::readCodeUnit(std::uint32_t& unit) {
  constexpr std::size_t length = 6;  // a backslash, the letter u and four digits
  const std::string_view escape = std::string_view(at_, end_).substr(0, length);
  if (escape.size() < length || !escape.starts_with("\\u")) return false;
  const char* const last = escape.data() + length;
  const auto [rest, error] = std::from_chars(escape.data() + 2, last, unit, 16);
  if (error != std::errc{} || rest != last) return false;
  at_ = last;
  return true;
}

}  // namespace vesk::package
