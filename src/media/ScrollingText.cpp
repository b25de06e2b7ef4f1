#include "media/ScrollingText.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <random>

namespace vesk::media {
namespace {

// In dots. Letters are random patterns of five by seven.
constexpr int letterWidth = 5;
constexpr int letterHeight = 7;
constexpr int columnWidth = letterWidth + 1;
constexpr int lineHeight = letterHeight + 2;
constexpr std::size_t rowsPerPicture = 3;
constexpr unsigned oneSpaceAmong = 7;

struct Colour {
  std::uint8_t luma;
  std::uint8_t cb;
  std::uint8_t cr;
};

constexpr Colour paper{30, 128, 128};
constexpr std::array<Colour, 4> inks{Colour{220, 128, 128}, Colour{150, 90, 110},
                                     Colour{170, 110, 170}, Colour{130, 180, 100}};

/// The letters of one line: for each column the ink and the dots, a bit each.
struct Letter {
  Colour ink = paper;
  std::uint64_t dots = 0;
};

std::vector<Letter> randomLine(int columns, std::mt19937& random) {
  std::vector<Letter> line(static_cast<std::size_t>(columns));
  for (Letter& letter : line) {
    if (random() % oneSpaceAmong != 0) {
      letter = {inks[random() % inks.size()], std::uint64_t{random()} << 32 | random()};
    }
  }
  return line;
}

Colour dotOf(const std::vector<Letter>& line, int x, int y) {
  const int inLetter = x % columnWidth;
  if (inLetter >= letterWidth || y >= letterHeight) {
    return paper;
  }
  const Letter& letter = line[static_cast<std::size_t>(x / columnWidth)];
  return (letter.dots >> (y * letterWidth + inLetter) & 1) != 0 ? letter.ink : paper;
}

void copyRow(const std::vector<std::uint8_t>& row, const I420Picture::Plane& plane, int y) {
  std::memcpy(plane.data + plane.stride * y, row.data(), row.size());
}

}  // namespace

ScrollingText::ScrollingText(int width, int height) {
  assert(width > 0 && height > 0 && width % 2 == 0 && height % 2 == 0);
  std::mt19937 random(1);
  const int lines = height / lineHeight + 1;  // about two pictures high
  const int dots = width / 2;
  for (int lineIndex = 0; lineIndex < lines; ++lineIndex) {
    const auto line = randomLine(dots / columnWidth + 1, random);
    for (int y = 0; y < lineHeight; ++y) {
      Row& row = rows_.emplace_back();
      for (int x = 0; x < dots; ++x) {
        const Colour colour = dotOf(line, x, y);
        row.luma.insert(row.luma.end(), 2, colour.luma);
        row.cb.push_back(colour.cb);
        row.cr.push_back(colour.cr);
      }
    }
  }
}

void ScrollingText::drawNext(I420Picture& picture) {
  const auto& [luma, cb, cr] = picture.planes();
  assert(static_cast<std::size_t>(luma.width) == rows_.front().luma.size());
  for (int y = 0; y < cb.height; ++y) {
    const Row& row = rows_[(top_ + static_cast<std::size_t>(y)) % rows_.size()];
    copyRow(row.luma, luma, 2 * y);
    copyRow(row.luma, luma, 2 * y + 1);
    copyRow(row.cb, cb, y);
    copyRow(row.cr, cr, y);
  }
  top_ = (top_ + rowsPerPicture) % rows_.size();
}

}  // namespace vesk::media
