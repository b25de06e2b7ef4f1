#pragma once

#include <array>
#include <cstdint>
#include <filesystem>

#include "package/Picture.h"

namespace vesk::media {

using Colour = std::array<std::uint8_t, 3>;  ///< red, green, blue

/// The colours of a picture's quarters: top left, top right, bottom left, bottom right.
using Quarters = std::array<Colour, 4>;

inline constexpr Quarters testColours{Colour{200, 40, 30}, Colour{30, 180, 60}, Colour{40, 60, 220},
                                      Colour{235, 230, 225}};

/// Writes a movie of these quarters that lasts a second, in BT.709, limited range.
void makeColourMovie(const std::filesystem::path& file, int width, int height,
                     const Quarters& colours = testColours);

/// Gives the first track of a movie a display matrix: 1, 0 or -1 for each of a, b, c, d.
void setDisplayMatrix(const std::filesystem::path& file, std::array<int, 4> matrix);

/// The colours at the centres of the quarters.
Quarters quartersOf(const package::Picture& picture);

/// The largest difference of two colours in one channel of one quarter.
int difference(const Quarters& a, const Quarters& b);

}  // namespace vesk::media
