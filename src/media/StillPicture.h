#pragma once

#include <expected>
#include <filesystem>

#include "media/DisplayOrientation.h"
#include "media/MediaError.h"
#include "package/Picture.h"

namespace vesk::media {

struct PictureSize {
  int width = 0;
  int height = 0;
  bool operator==(const PictureSize&) const = default;
};

/// The largest size of the same proportions inside a limit, no larger than the picture itself and
/// at least one pixel each way. All sizes are positive.
[[nodiscard]] PictureSize fittedSize(PictureSize picture, PictureSize limit) noexcept;

/// A picture as it is to be shown.
[[nodiscard]] package::Picture oriented(const package::Picture& stored,
                                        DisplayOrientation orientation);

/// The picture that a movie shows at a time in seconds: its latest one up to then, or else its
/// first, turned as the track asks and scaled down to fit a limit. Decodes from the movie's start,
/// and looks at 1000 pictures at most. Fails when the movie is damaged before that time.
[[nodiscard]] std::expected<package::Picture, MediaError> stillPicture(
    const std::filesystem::path& movie, double time, PictureSize limit);

}  // namespace vesk::media
