#include "media/StillPicture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "media/LibavError.h"
#include "media/RgbConversion.h"
#include "media/VideoReader.h"

namespace vesk::media {
namespace {

using Kind = MediaError::Kind;

/// The pictures of a second of the fastest recording; only a made-up movie has more before its
/// thumbnail.
constexpr int mostTriedPictures = 1000;

std::expected<VideoFrame, MediaError> frameAt(VideoReader& reader, double time,
                                              const std::filesystem::path& movie) {
  std::optional<VideoFrame> shown;
  for (int count = 0; count < mostTriedPictures; ++count) {
    auto next = reader.next();
    if (!next) {
      return std::unexpected(std::move(next.error()));
    }
    const bool isLater = !*next || (shown && (*next)->pts > time);
    if (isLater) {
      break;
    }
    shown = **std::move(next);
  }
  if (!shown) {
    return std::unexpected(noVideoTrackError(movie));
  }
  return *std::move(shown);
}

bool isTurnedSideways(DisplayOrientation orientation) {
  return orientation.quarterTurns % 2 != 0;
}

/// Where the pixel lies that is shown at (x, y).
std::pair<int, int> storedPlace(const package::Picture& stored, DisplayOrientation orientation,
                                int x, int y) {
  const int lastX = stored.width - 1;
  const int lastY = stored.height - 1;
  std::pair place{x, y};
  if (orientation.quarterTurns == 1) {
    place = {y, lastY - x};
  } else if (orientation.quarterTurns == 2) {
    place = {lastX - x, lastY - y};
  } else if (orientation.quarterTurns == 3) {
    place = {lastX - y, x};
  }
  return orientation.isMirrored ? std::pair{lastX - place.first, place.second} : place;
}

}  // namespace

PictureSize fittedSize(PictureSize picture, PictureSize limit) noexcept {
  const double scale = std::min({1.0, static_cast<double>(limit.width) / picture.width,
                                 static_cast<double>(limit.height) / picture.height});
  const auto scaled = [scale](int length) {
    return std::max(1, static_cast<int>(std::lround(length * scale)));
  };
  return {scaled(picture.width), scaled(picture.height)};
}

package::Picture oriented(const package::Picture& stored, DisplayOrientation orientation) {
  if (orientation == DisplayOrientation{}) {
    return stored;
  }
  const bool isSideways = isTurnedSideways(orientation);
  package::Picture shown{.width = isSideways ? stored.height : stored.width,
                         .height = isSideways ? stored.width : stored.height,
                         .pixels = std::vector<std::uint8_t>(stored.pixels.size())};
  constexpr std::ptrdiff_t bytesPerPixel = 3;
  auto target = shown.pixels.begin();
  for (int y = 0; y < shown.height; ++y) {
    for (int x = 0; x < shown.width; ++x) {
      const auto [storedX, storedY] = storedPlace(stored, orientation, x, y);
      const auto from = bytesPerPixel * (std::ptrdiff_t{storedY} * stored.width + storedX);
      target = std::copy_n(stored.pixels.begin() + from, bytesPerPixel, target);
    }
  }
  return shown;
}

std::expected<package::Picture, MediaError> stillPicture(const std::filesystem::path& movie,
                                                         double time, PictureSize limit) {
  auto reader = VideoReader::open(movie, 1);
  if (!reader) {
    return std::unexpected(std::move(reader.error()));
  }
  const auto frame = frameAt(*reader, time, movie);
  if (!frame) {
    return std::unexpected(frame.error());
  }
  const DisplayOrientation orientation = reader->info().orientation;
  if (isTurnedSideways(orientation)) {
    std::swap(limit.width, limit.height);
  }
  const PictureSize size = fittedSize({frame->width, frame->height}, limit);
  const auto stored = rgbPicture(*frame, size.width, size.height);
  if (!stored) {
    return std::unexpected(readingError(Kind::decodeFailed, stored.error(), movie));
  }
  return oriented(*stored, orientation);
}

}  // namespace vesk::media
