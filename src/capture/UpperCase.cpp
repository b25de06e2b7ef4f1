#include "capture/UpperCase.h"

#include <locale.h>  // NOLINT(modernize-deprecated-headers): locale_t is not in <clocale>

#include <array>
#include <clocale>
#include <cwchar>
#include <cwctype>

namespace vesk::capture {
namespace {

/// Makes the calling thread read and write UTF-8 while it lives.
class UnicodeScope {
 public:
  UnicodeScope() : before_(::uselocale(unicode())) {}
  UnicodeScope(const UnicodeScope&) = delete;
  UnicodeScope& operator=(const UnicodeScope&) = delete;
  ~UnicodeScope() { ::uselocale(before_); }

 private:
  static locale_t unicode() {
    static locale_t const locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
  }

  locale_t before_;
};

constexpr wchar_t sharpS = L'ß';

std::string encoded(wchar_t character) {
  std::array<char, 8> bytes{};
  std::mbstate_t state{};
  const auto size = std::wcrtomb(bytes.data(), character, &state);
  return {bytes.data(), size};
}

/// The only letter on a keyboard's key whose upper case is more than one letter.
std::string upperCased(wchar_t character) {
  if (character == sharpS) return "SS";
  return encoded(static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(character))));
}

}  // namespace

std::string upperCased(std::string_view text) {
  const UnicodeScope scope;
  std::string result;
  while (!text.empty()) {
    wchar_t character = 0;
    std::mbstate_t state{};
    const auto size = std::mbrtowc(&character, text.data(), text.size(), &state);
    const bool isCharacter = size > 0 && size <= text.size();
    result += isCharacter ? upperCased(character) : std::string{text.front()};
    text.remove_prefix(isCharacter ? size : 1);
  }
  return result;
}

}  // namespace vesk::capture
