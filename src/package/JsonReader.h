#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

namespace vesk::package {

/// Reads one line of JSON from left to right, straight into values. It checks the whole grammar,
/// also of what it skips. Every step says whether it found what it asked for; after a step that did
/// not, the line is bad and nothing more may be asked.
///
/// It exists because a log is nothing but small objects of known keys: a parser that first builds a
/// document spends longer on that than on the numbers, which are the real work. Being in the header
/// is part of the speed.
class JsonReader {
 public:
  /// Containers may stand in each other this often, the outermost counted.
  static constexpr int deepestNesting = 64;

  /// @param line UTF-8 without a line feed, behind whose end a line feed must be readable: that is
  /// what every scan stops at.
  explicit JsonReader(std::string_view line) : at_(line.data()), end_(at_ + line.size()) {}

  /// Steps over white space and this character, if it comes next.
  bool take(char expected) {
    skipSpace();
    if (*at_ != expected) return false;
    ++at_;
    return true;
  }

  bool takeNull() {
    skipSpace();
    return *at_ == 'n' && takeWord("null");
  }

  /// True when nothing but white space is left.
  bool atEnd() {
    skipSpace();
    return at_ == end_;
  }

  /// A string without its escapes. The view holds until the next string is read.
  bool readString(std::string_view& value) {
    if (!take('"')) return false;
    const char* const begin = at_;
    while (isPlain(*at_)) ++at_;
    value = {begin, at_};
    if (*at_ == '"') {
      ++at_;
      return true;
    }
    return readEscapedString(value);
  }

  /// A number that is finite as a double.
  bool readNumber(double& value) {
    skipSpace();
    return hasNumberGrammar() && convertNumber(value);
  }

  /// A number that is an integer in value, so also 60.0.
  bool readInteger(std::int64_t& value);

  /// Steps over a value of any kind.
  /// @param depth the number of containers that it stands in
  bool skipValue(int depth);

 private:
  static bool isDigit(char character) { return character >= '0' && character <= '9'; }

  /// A character that stands for itself in a string.
  static bool isPlain(char character) {
    return static_cast<unsigned char>(character) >= 0x20U && character != '"' && character != '\\';
  }

  void skipSpace() {
    while (*at_ == ' ' || *at_ == '\t' || *at_ == '\r') ++at_;
  }

  bool takeWord(std::string_view word) {
    if (!std::string_view(at_, end_).starts_with(word)) return false;
    at_ += word.size();
    return true;
  }

  /// Refuses the forms that the conversion would take although JSON does not know them: a leading
  /// zero, a bare point, "inf". An exponent without digits is left over by the conversion, and then
  /// no comma or bracket comes next.
  bool hasNumberGrammar() const {
    const char* digit = at_ + (*at_ == '-' ? 1 : 0);
    if (!isDigit(*digit)) return false;
    if (*digit == '0') {
      ++digit;
      if (isDigit(*digit)) return false;
    } else {
      while (isDigit(*digit)) ++digit;
    }
    return *digit != '.' || isDigit(digit[1]);
  }

  bool convertNumber(double& value) {
    const auto [rest, error] = std::from_chars(at_, end_, value);
    const std::string_view number(at_, rest);
    at_ = rest;
    return error == std::errc{} || convertExtremeNumber(number, value);
  }

  static bool convertExtremeNumber(std::string_view number, double& value);
  bool readEscapedString(std::string_view& value);
  bool readEscape();
  bool readUnicodeEscape();
  bool readCodeUnit(std::uint32_t& unit);
  bool skipArray(int depth);
  bool skipObject(int depth);

  const char* at_;
  const char* end_;
  std::string unescaped_;
};

}  // namespace vesk::package
