#include "package/EventCounts.h"

#include <simdjson.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <istream>
#include <memory>
#include <string_view>
#include <system_error>

#include "package/CutCharacter.h"
#include "package/FileLimits.h"

namespace vesk::package {

namespace {

constexpr std::size_t pieceSize = std::size_t{256} << 10;
constexpr std::size_t nowhere = std::string_view::npos;

/// A word to be found in a text of which most lines do not have it: the search runs from one
/// occurrence of its rarest letter to the next.
struct Word {
  std::string_view text;
  std::size_t rarest = 0;  ///< the place of that letter in the text

  std::size_t firstIn(std::string_view haystack, std::size_t from) const {
    for (std::size_t at = from + rarest; at < haystack.size(); ++at) {
      at = haystack.find(text[rarest], at);
      if (at == nowhere) return nowhere;
      if (haystack.substr(at - rarest).starts_with(text)) return at - rarest;
    }
    return nowhere;
  }
};

// A line of a move, of which a log has thousands for each other one, holds neither k nor z.
constexpr Word click{.text = R"("click")", .rarest = 5};
constexpr Word zoomIn{.text = R"("zoomIn")", .rarest = 1};
constexpr Word zoomOut{.text = R"("zoomOut")", .rarest = 1};
constexpr Word lineFeed{.text = "\n"};
constexpr std::size_t longestWord = zoomOut.text.size();

/// The places of a word from left to right, each searched for only once.
class Occurrences {
 public:
  Occurrences(const Word& word, std::string_view text)
      : word_(word), text_(text), place_(word.firstIn(text, 0)) {}

  /// The first place at or behind `from`, which must not fall from call to call.
  std::size_t at(std::size_t from) {
    if (place_ < from) place_ = word_.firstIn(text_, from);
    return place_;
  }

 private:
  const Word& word_;
  std::string_view text_;
  std::size_t place_;
};

/// Counts the lines of a text that comes in pieces.
class LineCounter {
 public:
  /// Goes through a piece and gives those characters at its end that may begin a word; the next
  /// piece must begin with them.
  std::string_view take(std::string_view piece) {
    Occurrences clicks(click, piece);
    Occurrences zoomIns(zoomIn, piece);
    Occurrences zoomOuts(zoomOut, piece);
    Occurrences lineFeeds(lineFeed, piece);
    std::size_t from = 0;
    while (true) {
      const std::size_t clickPlace = clicks.at(from);
      const std::size_t place = std::min({clickPlace, zoomIns.at(from), zoomOuts.at(from)});
      if (lineFeeds.at(from) < place) closeLine();
      if (place == nowhere) break;
      (place == clickPlace ? hasClick_ : hasMark_) = true;
      from = place + 1;
    }
    return unfinishedWord(piece);
  }

  EventCounts finish() {
    closeLine();
    return counts_;
  }

 private:
  void closeLine() {
    if (hasClick_) {
      ++counts_.clicks;
    } else if (hasMark_) {
      ++counts_.marks;
    }
    hasClick_ = false;
    hasMark_ = false;
  }

  /// Holds no line feed, so that no line is closed twice.
  static std::string_view unfinishedWord(std::string_view piece) {
    const auto tail = piece.substr(piece.size() - std::min(piece.size(), longestWord - 1));
    return tail.substr(tail.rfind('\n') + 1);
  }

  EventCounts counts_;
  bool hasClick_ = false;  ///< of the line that has not ended yet
  bool hasMark_ = false;
};

/// Reads up to the file's end in pieces through one buffer, in which the last characters of a piece
/// stand before the next one.
std::optional<EventCounts> countsIn(std::istream& stream) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(longestWord + pieceSize);
  LineCounter counter;
  std::uintmax_t total = 0;
  std::size_t kept = 0;
  std::size_t unchecked = 0;  // of the kept bytes the last ones, which begin a character
  while (stream) {
    stream.read(buffer.get() + kept, pieceSize);
    if (stream.bad()) return std::nullopt;
    const auto count = static_cast<std::size_t>(stream.gcount());
    total += count;
    if (total > largestEventLogFile) return std::nullopt;

    const std::string_view piece(buffer.get(), kept + count);
    const auto whole = withoutCutCharacter(piece);
    if (!simdjson::validate_utf8(whole.substr(kept - unchecked))) return std::nullopt;
    unchecked = piece.size() - whole.size();
    const auto rest = counter.take(piece);
    kept = rest.size();
    std::memmove(buffer.get(), rest.data(), kept);
  }
  return counter.finish();
}

}  // namespace

std::optional<EventCounts> countEvents(const std::filesystem::path& file) {
  std::error_code error;
  if (std::filesystem::file_size(file, error) > largestEventLogFile || error) return std::nullopt;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::nullopt;
  return countsIn(stream);
}

}  // namespace vesk::package
