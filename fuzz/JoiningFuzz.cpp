// Of any bytes in a file, joining its fragments makes a movie in which no byte of the media has
// changed, or says why not and leaves the file as it was.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "ScratchFolder.h"
#include "media/FragmentJoining.h"
#include "media/FragmentedMovie.h"
#include "package/FileText.h"

namespace {

namespace fs = std::filesystem;
using namespace vesk;
using fuzz::require;

constexpr std::size_t headerSize = 16;

std::string contentsOf(const fs::path& file) {
  return package::readWholeFile(file, std::uintmax_t{1} << 30).value();
}

void requireSamplesInside(const media::FragmentedMovie& movie) {
  for (const media::SampleTable& track : movie.tracks) {
    auto sample = track.samples.begin();
    for (const auto& chunk : track.chunks) {
      std::uint64_t end = chunk.position;
      for (std::uint32_t i = 0; i < chunk.sampleCount; ++i) end += (sample++)->size;
      require(end <= movie.end);
    }
    require(sample == track.samples.end());
    require(std::ranges::is_sorted(track.samples, {}, &media::SampleTable::Sample::time));
  }
}

void requireSameMedia(std::string_view before, std::string_view after,
                      const media::FragmentedMovie& movie) {
  const auto start = static_cast<std::size_t>(movie.indexPosition);
  const auto end = static_cast<std::size_t>(movie.end);
  require(after.substr(0, start) == before.substr(0, start));
  require(after.substr(start + 4, 4) == "mdat");
  const std::size_t media = start + headerSize;
  require(after.substr(media, end - media) == before.substr(media, end - media));
  require(after.substr(end + 4, 4) == "moov");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  const fs::path file = folder.path() / "screen.mov";
  const std::string_view before(reinterpret_cast<const char*>(data), size);
  require(package::writeFile(file, before).has_value());
  const auto movie = media::FragmentedMovie::read(media::RandomAccessFile::open(file).value());
  if (movie) requireSamplesInside(*movie);

  const auto joined = media::joinFragments(file);
  const std::string after = contentsOf(file);
  if (!joined) {
    require(!joined.error().message.empty() && after == before);
    return 0;
  }
  requireSameMedia(before, after, movie.value());
  require(!media::joinFragments(file) && contentsOf(file) == after);
  return 0;
}
