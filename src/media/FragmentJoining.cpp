#include "media/FragmentJoining.h"

#include <cerrno>
#include <vector>

#include "media/Box.h"
#include "media/FragmentedMovie.h"
#include "media/LibavError.h"
#include "media/MovieIndex.h"
#include "media/RandomAccessFile.h"

extern "C" {
#include <libavutil/error.h>
}

namespace vesk::media {
namespace {

using Kind = MediaError::Kind;

std::unexpected<MediaError> cannotRead(int systemError, const std::filesystem::path& file) {
  const bool isNoMovie = systemError == EINVAL;
  return std::unexpected(
      readingError(Kind::openFailed, isNoMovie ? AVERROR_INVALIDDATA : AVERROR(systemError), file));
}

std::unexpected<MediaError> cannotWrite(int systemError, const std::filesystem::path& file) {
  return std::unexpected(writingError(Kind::writeFailed, AVERROR(systemError), file));
}

std::vector<std::uint8_t> mediaHeader(std::uint64_t size) {
  constexpr std::string_view type = "mdat";
  BoxWriter header;
  header.put32(1);  // the size follows the type
  header.put({reinterpret_cast<const std::uint8_t*>(type.data()), type.size()});
  header.put64(size);
  return header.bytes();
}

/// Leaves nothing behind where it fails.
std::expected<void, int> append(RandomAccessFile& file, std::span<const std::uint8_t> bytes) {
  const std::uint64_t size = file.size();
  auto outcome = file.write(size, bytes);
  if (outcome) {
    outcome = file.synchronize();
  }
  if (!outcome) {
    [[maybe_unused]] const auto cut = file.truncate(size);
  }
  return outcome;
}

}  // namespace

std::expected<JoinedMedia, MediaError> appendIndex(const std::filesystem::path& file) {
  auto opened = RandomAccessFile::open(file);
  if (!opened) {
    return cannotRead(opened.error(), file);
  }
  const auto movie = FragmentedMovie::read(*opened);
  if (!movie) {
    return cannotRead(movie.error(), file);
  }
  const auto index = finishedIndex(movie->index, movie->tracks);
  if (!index) {
    return cannotRead(EINVAL, file);
  }
  auto outcome =
      movie->end < opened->size() ? opened->truncate(movie->end) : std::expected<void, int>();
  if (outcome) {
    outcome = append(*opened, *index);
  }
  if (!outcome) {
    return cannotWrite(outcome.error(), file);
  }
  return JoinedMedia{movie->indexPosition, movie->end - movie->indexPosition};
}

std::expected<void, MediaError> coverFragments(const std::filesystem::path& file,
                                               const JoinedMedia& media) {
  auto opened = RandomAccessFile::open(file);
  if (!opened) {
    return cannotRead(opened.error(), file);
  }
  if (const auto written = opened->write(media.position, mediaHeader(media.size)); !written) {
    return cannotWrite(written.error(), file);
  }
  return {};
}

std::expected<void, MediaError> joinFragments(const std::filesystem::path& file) {
  const auto media = appendIndex(file);
  if (!media) {
    return std::unexpected(media.error());
  }
  return coverFragments(file, *media);
}

}  // namespace vesk::media
