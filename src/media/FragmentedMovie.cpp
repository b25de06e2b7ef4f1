#include "media/FragmentedMovie.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "media/Box.h"

namespace vesk::media {
namespace {

constexpr std::size_t longestHeader = 16;
constexpr std::uint64_t longestIndex = std::uint64_t{256} << 20;
constexpr std::int64_t longestTime = std::int64_t{1} << 52;  ///< in ticks

// Of the box "tfhd".
constexpr std::uint32_t baseGiven = 0x1;
constexpr std::uint32_t descriptionGiven = 0x2;
constexpr std::uint32_t defaultDurationGiven = 0x8;
constexpr std::uint32_t defaultSizeGiven = 0x10;
constexpr std::uint32_t defaultFlagsGiven = 0x20;
constexpr std::uint32_t baseIsFragment = 0x20000;
// Of the box "trun".
constexpr std::uint32_t positionGiven = 0x1;
constexpr std::uint32_t firstFlagsGiven = 0x4;
constexpr std::uint32_t durationsGiven = 0x100;
constexpr std::uint32_t sizesGiven = 0x200;
constexpr std::uint32_t flagsGiven = 0x400;
constexpr std::uint32_t reorderingGiven = 0x800;
// Of a sample.
constexpr std::uint32_t isNoKey = 0x10000;

constexpr std::uint32_t flagsOf(std::uint32_t versionAndFlags) {
  return versionAndFlags & 0xffffff;
}

constexpr std::uint32_t versionOf(std::uint32_t versionAndFlags) {
  return versionAndFlags >> 24;
}

/// A box's place in the file.
struct BoxPlace {
  std::string type;
  std::uint64_t position = 0;
  std::uint64_t size = 0;
};

/// What holds for samples that do not tell it themselves.
struct Defaults {
  std::uint32_t track = 0;
  std::uint32_t duration = 0;
  std::uint32_t size = 0;
  std::uint32_t flags = 0;
};

/// The box at a position; nothing where no complete one is.
std::expected<std::optional<BoxPlace>, int> placeAt(const RandomAccessFile& file,
                                                    std::uint64_t position) {
  const auto bytes = file.read(position, longestHeader);
  if (!bytes) {
    return std::unexpected(bytes.error());
  }
  BoxReader header(*bytes);
  std::uint64_t size = header.take32();
  const ByteView type = header.takeBytes(4);
  if (size == 1) {
    size = header.take64();
  }
  if (header.ranOut() || size < 8 || size > file.size() - position) {
    return std::nullopt;
  }
  return BoxPlace{{type.begin(), type.end()}, position, size};
}

std::vector<Defaults> trackDefaults(ByteView index) {
  std::vector<Defaults> all;
  const auto boxes = boxesIn(contentOf(index, "mvex").value_or(ByteView{}));
  for (const Box& box : boxes.value_or(std::vector<Box>{})) {
    if (box.type == "trex") {
      BoxReader fields(box.content);
      fields.take32();
      Defaults& track = all.emplace_back();
      track.track = fields.take32();
      fields.take32();
      track.duration = fields.take32();
      track.size = fields.take32();
      track.flags = fields.take32();
    }
  }
  return all;
}

/// Collects the samples of one fragment after another.
class Collection {
 public:
  explicit Collection(std::vector<Defaults> defaults) : defaults_(std::move(defaults)) {
    for (const Defaults& each : defaults_) {
      tracks_.push_back({.track = each.track});
    }
  }

  /// False for a fragment that cannot be understood.
  /// @param position of the fragment in the file.
  /// @param media where its samples lie.
  bool add(ByteView fragment, std::uint64_t position, const BoxPlace& media) {
    mediaPosition_ = media.position;
    mediaEnd_ = media.position + media.size;
    const auto boxes = boxesIn(fragment);
    return boxes && std::ranges::all_of(*boxes, [&](const Box& box) {
             return box.type != "traf" || addTrack(box.content, position);
           });
  }

  std::vector<SampleTable> take() { return std::move(tracks_); }

 private:
  bool addTrack(ByteView part, std::uint64_t fragmentPosition);
  bool addRun(ByteView run, std::uint64_t base, const Defaults& defaults, SampleTable& track,
              std::int64_t& time);

  std::vector<Defaults> defaults_;
  std::vector<SampleTable> tracks_;
  std::uint64_t mediaPosition_ = 0;  ///< in the file, of the next sample at the earliest
  std::uint64_t mediaEnd_ = 0;
};

bool Collection::addTrack(ByteView part, std::uint64_t fragmentPosition) {
  BoxReader head(contentOf(part, "tfhd").value_or(ByteView{}));
  const std::uint32_t flags = flagsOf(head.take32());
  const std::uint32_t number = head.take32();
  const auto known = std::ranges::find(defaults_, number, &Defaults::track);
  if (head.ranOut() || known == defaults_.end() || (flags & baseGiven) != 0 ||
      (flags & baseIsFragment) == 0) {
    return false;
  }
  Defaults defaults = *known;
  const auto override = [&](std::uint32_t given, std::uint32_t& value) {
    if ((flags & given) != 0) {
      value = head.take32();
    }
  };
  std::uint32_t description = 0;
  override(descriptionGiven, description);
  override(defaultDurationGiven, defaults.duration);
  override(defaultSizeGiven, defaults.size);
  override(defaultFlagsGiven, defaults.flags);

  BoxReader start(contentOf(part, "tfdt").value_or(ByteView{}));
  const bool isLong = versionOf(start.take32()) == 1;
  auto time = static_cast<std::int64_t>(isLong ? start.take64() : start.take32());
  SampleTable& track = tracks_[static_cast<std::size_t>(known - defaults_.begin())];
  if (head.ranOut() || start.ranOut() || time < track.end() || time > longestTime) {
    return false;
  }
  const auto boxes = boxesIn(part);
  return boxes && std::ranges::all_of(*boxes, [&](const Box& box) {
           return box.type != "trun" ||
                  addRun(box.content, fragmentPosition, defaults, track, time);
         });
}

/// Samples follow one another in the file and none is empty, so that there are no more of them than
/// their media has bytes, whatever a run may claim.
bool Collection::addRun(ByteView run, std::uint64_t base, const Defaults& defaults,
                        SampleTable& track, std::int64_t& time) {
  BoxReader fields(run);
  const std::uint32_t flags = flagsOf(fields.take32());
  const std::uint32_t count = fields.take32();
  const std::uint64_t position = base + ((flags & positionGiven) != 0 ? fields.take32() : 0);
  if ((flags & positionGiven) == 0 || (flags & reorderingGiven) != 0 || count == 0 ||
      position < mediaPosition_) {
    return false;
  }
  std::uint32_t sampleFlags = (flags & firstFlagsGiven) != 0 ? fields.take32() : defaults.flags;
  mediaPosition_ = position;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t duration =
        (flags & durationsGiven) != 0 ? fields.take32() : defaults.duration;
    const std::uint32_t size = (flags & sizesGiven) != 0 ? fields.take32() : defaults.size;
    sampleFlags = (flags & flagsGiven) != 0 ? fields.take32() : sampleFlags;
    track.samples.push_back({time, duration, size, (sampleFlags & isNoKey) == 0});
    sampleFlags = defaults.flags;
    time += duration;
    mediaPosition_ += size;
    if (fields.ranOut() || size == 0 || mediaPosition_ > mediaEnd_ || time > longestTime) {
      return false;
    }
  }
  track.chunks.push_back({position, count});
  return !fields.ranOut();
}

}  // namespace

std::expected<FragmentedMovie, int> FragmentedMovie::read(const RandomAccessFile& file) {
  FragmentedMovie movie;
  std::optional<Collection> samples;
  std::vector<std::uint8_t> fragment;  ///< whose media comes next
  std::uint64_t fragmentPosition = 0;
  for (std::uint64_t position = 0; position < file.size();) {
    const auto place = placeAt(file, position);
    if (!place) {
      return std::unexpected(place.error());
    }
    const bool isCutOff = !*place;
    const bool isFinishedIndex = *place && samples && (*place)->type == "moov";
    if (isCutOff || isFinishedIndex) {
      break;
    }
    const auto& [type, start, size] = **place;
    position = start + size;
    if (type == "moov" || type == "moof") {
      auto bytes = size <= longestIndex ? file.read(start, static_cast<std::size_t>(size))
                                        : std::unexpected(EINVAL);
      if (!bytes) {
        return std::unexpected(bytes.error());
      }
      if (type == "moof") {
        fragment = *std::move(bytes);
        fragmentPosition = start;
        continue;
      }
      movie.index = *std::move(bytes);
      samples.emplace(trackDefaults(ByteView(movie.index).subspan(8)));
      movie.indexPosition = start;
      movie.end = position;
    } else if (type == "mdat" && samples && !fragment.empty()) {
      if (!samples->add(ByteView(fragment).subspan(8), fragmentPosition, **place)) {
        return std::unexpected(EINVAL);
      }
      fragment.clear();
      movie.end = position;
    }
  }
  if (!samples) {
    return std::unexpected(EINVAL);
  }
  movie.tracks = samples->take();
  return movie;
}

}  // namespace vesk::media
