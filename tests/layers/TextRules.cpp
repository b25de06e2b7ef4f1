#include "layers/TextRules.h"

#include <algorithm>
#include <array>
#include <regex>

namespace vesk::layers {
namespace {

struct Wording {
  std::regex pattern;
  std::string_view reason;
};

/// The patterns are put together from pieces, so that this file keeps to them itself.
const std::array<Wording, 3>& unwantedWordings() {
  using namespace std::string_literals;
  static const std::array<Wording, 3> wordings{
      Wording{std::regex{R"(\bPar)"s + R"(ts? [1-7]\.[1-8]\b|\bspe)"s + R"(c\.md\b|\bthe spe)"s +
                         R"(c(ification)?\b|\bissue #?[0-9])"s + "|\u00a7 ?(?!3\\.2\\.2)[0-9]"s},
              "refers to a text outside the repository"},
      Wording{std::regex{R"(\b(TO)"s + R"(DO|FIX)"s + R"(ME|XX)"s + R"(X|HA)"s + R"(CK)\b)"s},
              "leaves work for later"},
      Wording{std::regex{R"(\bDISA)"s + R"(BLED_|\bGTEST_SK)"s + R"(IP|\bQSK)"s + R"(IP\b)"s},
              "switches a test off"},
  };
  return wordings;
}

}  // namespace

std::optional<std::string> lengthBreach(std::string_view text) {
  const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n'));
  if (lines < longestFile) return std::nullopt;
  return std::to_string(lines) + " lines";
}

std::optional<std::string> wordingBreach(std::string_view line) {
  for (const auto& [pattern, reason] : unwantedWordings()) {
    if (std::regex_search(line.begin(), line.end(), pattern)) return std::string{reason};
  }
  return std::nullopt;
}

}  // namespace vesk::layers
