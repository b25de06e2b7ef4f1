#include "media/Thumbnail.h"

#include <cstdint>
#include <string_view>

#include "media/JpegPicture.h"
#include "media/StillPicture.h"
#include "package/DurableWrite.h"
#include "package/PackageFile.h"

namespace vesk::media {
namespace {

constexpr std::string_view thumbnailName = "thumb.jpg";

std::optional<package::Picture> keptThumbnail(const std::filesystem::path& package) {
  constexpr std::uintmax_t largestFile = std::uintmax_t{4} << 20;
  const auto bytes = package::readPackageFile(package, thumbnailName, largestFile);
  return bytes ? decodeJpeg(*bytes) : std::nullopt;
}

std::optional<package::Picture> newThumbnail(const std::filesystem::path& package) {
  constexpr double time = 0.5;
  constexpr PictureSize limit{640, 640};
  const auto movie = package::packageFile(package, "screen.mov");
  if (!movie || !*movie) {
    return std::nullopt;
  }
  auto picture = stillPicture(**movie, time, limit);
  return picture ? std::optional(std::move(*picture)) : std::nullopt;
}

/// It is a cache: where it cannot be written, the next call makes it again.
void keep(const package::Picture& picture, const std::filesystem::path& package) {
  constexpr double quality = 0.7;
  if (const auto bytes = encodeJpeg(picture, quality)) {
    [[maybe_unused]] const auto written =
        package::writeFileAtomically(package / thumbnailName, *bytes);
  }
}

}  // namespace

std::optional<package::Picture> thumbnail(const std::filesystem::path& package) {
  if (auto kept = keptThumbnail(package)) {
    return kept;
  }
  auto made = newThumbnail(package);
  if (made) {
    keep(*made, package);
  }
  return made;
}

}  // namespace vesk::media
