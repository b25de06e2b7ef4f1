#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>

#include "media/MediaError.h"

namespace vesk::media {

/// Turns a movie in fragments, complete or cut off anywhere, into a plain one with an index behind
/// its media, without moving the media: what comes before the new index becomes one box of media.
/// At every moment the file can be played, and where this fails it is as it was, except that an
/// incomplete fragment at its end may be gone. What was broken off can be done again. A movie that
/// is in no fragments fails and stays as it is.
[[nodiscard]] std::expected<void, MediaError> joinFragments(const std::filesystem::path& file);

// The two steps of it.

/// The media in a movie that has two indexes.
struct JoinedMedia {
  std::uint64_t position = 0;  ///< of the first index, where the media's box is to begin
  std::uint64_t size = 0;
};

/// Puts the index of the complete movie behind the fragments. Whoever reads the file still goes by
/// the first index.
[[nodiscard]] std::expected<JoinedMedia, MediaError> appendIndex(const std::filesystem::path& file);

/// Makes the first index and the fragments a box of media.
[[nodiscard]] std::expected<void, MediaError> coverFragments(const std::filesystem::path& file,
                                                             const JoinedMedia& media);

}  // namespace vesk::media
