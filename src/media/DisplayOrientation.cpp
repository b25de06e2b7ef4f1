#include "media/DisplayOrientation.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numbers>

extern "C" {
#include <libavformat/avformat.h>
}

namespace vesk::media {
namespace {

/// A position (x, y) is shown at x (a, b) + y (c, d).
struct Turn {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;
};

Turn turnOf(const AVStream& track) {
  constexpr std::size_t elements = 9;
  std::size_t size = 0;
  const auto* data = av_stream_get_side_data(&track, AV_PKT_DATA_DISPLAYMATRIX, &size);
  std::int32_t matrix[elements];
  if (data == nullptr || size < sizeof matrix) {
    return {};
  }
  std::memcpy(matrix, data, sizeof matrix);
  constexpr double one = 1 << 16;
  return {matrix[0] / one, matrix[1] / one, matrix[3] / one, matrix[4] / one};
}

}  // namespace

DisplayOrientation displayOrientationOf(const AVStream& track) {
  const Turn turn = turnOf(track);
  const bool isMirrored = turn.a * turn.d - turn.b * turn.c < 0;
  const double sign = isMirrored ? -1 : 1;
  const double angle = std::atan2(sign * turn.b, sign * turn.a);
  const auto quarters = static_cast<int>(std::lround(angle / (std::numbers::pi / 2)));
  return {.isMirrored = isMirrored, .quarterTurns = (quarters + 4) % 4};
}

}  // namespace vesk::media
