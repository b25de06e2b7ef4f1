#include "media/MovieIndex.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vesk::media {
namespace {

constexpr std::uint32_t longVersion = 1U << 24;
constexpr std::uint32_t flagsMask = 0xffffff;
constexpr double longestMovie = 1e9;  ///< s

/// Runs of equal values: how often, and what.
class RunLengths {
 public:
  void add(std::uint32_t value) {
    if (runs_.empty() || runs_.back().second != value) {
      runs_.emplace_back(0, value);
    }
    ++runs_.back().first;
  }
  [[nodiscard]] const std::vector<std::pair<std::uint32_t, std::uint32_t>>& runs() const {
    return runs_;
  }

 private:
  std::vector<std::pair<std::uint32_t, std::uint32_t>> runs_;
};

/// The fields that the headers of movie, track and media begin with, where the durations are. A
/// version for short times and one for long ones exist; the long one is what is written.
struct TimedHeader {
  std::uint32_t flags = 0;
  std::uint64_t created = 0;
  std::uint64_t changed = 0;
  ByteView identity;  ///< what lies between the dates and the duration
  ByteView rest;      ///< behind the duration
  bool isWhole = false;

  static TimedHeader read(ByteView content, std::size_t identitySize) {
    BoxReader fields(content);
    TimedHeader header;
    const std::uint32_t versionAndFlags = fields.take32();
    const bool isLong = versionAndFlags >= longVersion;
    const auto takeTime = [&] { return isLong ? fields.take64() : fields.take32(); };
    header.flags = versionAndFlags & flagsMask;
    header.created = takeTime();
    header.changed = takeTime();
    header.identity = fields.takeBytes(identitySize);
    takeTime();
    header.rest = fields.rest();
    header.isWhole = !fields.ranOut();
    return header;
  }

  void write(BoxWriter& out, std::uint64_t duration) const {
    out.put32(longVersion | flags);
    out.put64(created);
    out.put64(changed);
    out.put(identity);
    out.put64(duration);
    out.put(rest);
  }
};

constexpr std::size_t movieIdentity = 4;  ///< ticks per second
constexpr std::size_t mediaIdentity = 4;  ///< ticks per second
constexpr std::size_t trackIdentity = 8;  ///< number and a reserved field

std::uint32_t numberIn(ByteView identity) {
  return BoxReader(identity).take32();
}

struct Edit {
  std::uint64_t duration = 0;  ///< in ticks of the movie
  std::int64_t start = 0;      ///< in the track; -1 for a time without media
  std::uint32_t rate = 0;
};

std::vector<Edit> editsIn(ByteView track) {
  const ByteView edits = contentOf(track, "edts").value_or(ByteView{});
  BoxReader fields(contentOf(edits, "elst").value_or(ByteView{}));
  const bool isLong = fields.take32() >= longVersion;
  std::vector<Edit> all(std::min<std::size_t>(fields.take32(), fields.rest().size() / 12));
  for (Edit& edit : all) {
    edit.duration = isLong ? fields.take64() : fields.take32();
    edit.start = isLong ? static_cast<std::int64_t>(fields.take64())
                        : static_cast<std::int32_t>(fields.take32());
    edit.rate = fields.take32();
  }
  return all;
}

/// Writes the index of one movie.
class IndexWriter {
 public:
  explicit IndexWriter(std::span<const SampleTable> tracks) : tracks_(tracks) {}

  std::optional<std::vector<std::uint8_t>> write(ByteView movie);

 private:
  struct Track {
    const SampleTable* samples = nullptr;
    TimedHeader head;
    TimedHeader media;
    std::vector<Edit> edits;
    std::uint64_t duration = 0;  ///< in ticks of the movie
  };

  [[nodiscard]] std::optional<Track> understand(ByteView content) const;
  void writeTrack(ByteView content, const Track& track);
  void writeEdits(const Track& track);
  void writeMedia(ByteView content, const Track& track);
  void writeSampleTable(ByteView content, const SampleTable& samples);
  void writeTimes(const SampleTable& samples);
  void writeKeys(const SampleTable& samples);
  void writeChunks(const SampleTable& samples);
  void writeSizes(const SampleTable& samples);

  /// Copies the boxes in `content`, except those that `replace` has taken care of.
  template <typename Replace>
  void copyBoxes(ByteView content, const Replace& replace) {
    const auto boxes = boxesIn(content);
    isWhole_ = isWhole_ && boxes.has_value();
    for (const Box& box : boxes.value_or(std::vector<Box>{})) {
      if (!replace(box)) {
        out_.put(box.whole);
      }
    }
  }

  std::span<const SampleTable> tracks_;
  std::uint32_t ticksPerSecond_ = 0;
  bool isWhole_ = true;
  BoxWriter out_;
};

std::optional<std::vector<std::uint8_t>> IndexWriter::write(ByteView movie) {
  const auto head = TimedHeader::read(contentOf(movie, "mvhd").value_or(ByteView{}), movieIdentity);
  ticksPerSecond_ = numberIn(head.identity);
  const auto boxes = boxesIn(movie);
  const bool isEmpty =
      std::ranges::all_of(tracks_, [](const SampleTable& track) { return track.samples.empty(); });
  if (!head.isWhole || ticksPerSecond_ == 0 || !boxes || isEmpty) {
    return std::nullopt;
  }
  std::uint64_t duration = 0;
  for (const Box& box : *boxes) {
    if (box.type == "trak") {
      const auto track = understand(box.content);
      if (!track) {
        return std::nullopt;
      }
      duration = std::max(duration, track->duration);
    }
  }
  out_.box("moov", [&] {
    copyBoxes(movie, [&](const Box& box) {
      if (box.type == "mvhd") {
        out_.box("mvhd", [&] { head.write(out_, duration); });
      } else if (box.type == "trak") {
        if (const auto track = understand(box.content); !track->samples->samples.empty()) {
          out_.box("trak", [&] { writeTrack(box.content, *track); });
        }
      } else {
        return box.type == "mvex";
      }
      return true;
    });
  });
  return isWhole_ ? std::optional(out_.bytes()) : std::nullopt;
}

std::optional<IndexWriter::Track> IndexWriter::understand(ByteView content) const {
  Track track;
  track.head = TimedHeader::read(contentOf(content, "tkhd").value_or(ByteView{}), trackIdentity);
  const ByteView media = contentOf(content, "mdia").value_or(ByteView{});
  track.media = TimedHeader::read(contentOf(media, "mdhd").value_or(ByteView{}), mediaIdentity);
  const auto samples =
      std::ranges::find(tracks_, numberIn(track.head.identity), &SampleTable::track);
  const std::uint32_t mediaTicks = numberIn(track.media.identity);
  if (!track.head.isWhole || !track.media.isWhole || samples == tracks_.end() || mediaTicks == 0 ||
      (!samples->samples.empty() && samples->samples.front().time != 0)) {
    return std::nullopt;
  }
  track.samples = &*samples;
  track.edits = editsIn(content);
  if (track.edits.empty()) {
    track.edits.push_back({.start = 0, .rate = 1U << 16});
  }
  // Only the last edit was open to the end.
  Edit& last = track.edits.back();
  const double length = static_cast<double>(std::max<std::int64_t>(
                            samples->end() - std::max<std::int64_t>(last.start, 0), 0)) /
                        mediaTicks;
  if (length > longestMovie) {
    return std::nullopt;
  }
  last.duration = static_cast<std::uint64_t>(std::llround(length * ticksPerSecond_));
  for (const Edit& edit : track.edits) {
    track.duration += edit.duration;
  }
  return track;
}

void IndexWriter::writeTrack(ByteView content, const Track& track) {
  copyBoxes(content, [&](const Box& box) {
    if (box.type == "tkhd") {
      out_.box("tkhd", [&] { track.head.write(out_, track.duration); });
      writeEdits(track);
    } else if (box.type == "mdia") {
      out_.box("mdia", [&] { writeMedia(box.content, track); });
    } else {
      return box.type == "edts";
    }
    return true;
  });
}

void IndexWriter::writeEdits(const Track& track) {
  out_.box("edts", [&] {
    out_.box("elst", [&] {
      out_.put32(longVersion);
      out_.put32(track.edits.size());
      for (const Edit& edit : track.edits) {
        out_.put64(edit.duration);
        out_.put64(static_cast<std::uint64_t>(edit.start));
        out_.put32(edit.rate);
      }
    });
  });
}

void IndexWriter::writeMedia(ByteView content, const Track& track) {
  copyBoxes(content, [&](const Box& box) {
    if (box.type == "mdhd") {
      const auto duration = static_cast<std::uint64_t>(track.samples->end());
      out_.box("mdhd", [&] { track.media.write(out_, duration); });
    } else if (box.type == "minf") {
      out_.box("minf", [&] {
        copyBoxes(box.content, [&](const Box& part) {
          if (part.type != "stbl") {
            return false;
          }
          out_.box("stbl", [&] { writeSampleTable(part.content, *track.samples); });
          return true;
        });
      });
    } else {
      return false;
    }
    return true;
  });
}

void IndexWriter::writeSampleTable(ByteView content, const SampleTable& samples) {
  copyBoxes(content, [](const Box& box) { return box.type != "stsd"; });
  writeTimes(samples);
  writeKeys(samples);
  writeChunks(samples);
  writeSizes(samples);
}

void IndexWriter::writeTimes(const SampleTable& samples) {
  RunLengths steps;
  for (std::size_t i = 0; i < samples.samples.size(); ++i) {
    const auto& sample = samples.samples[i];
    const bool isLast = i + 1 == samples.samples.size();
    const std::int64_t step = isLast ? sample.duration : samples.samples[i + 1].time - sample.time;
    isWhole_ = isWhole_ && step >= 0 && step <= std::numeric_limits<std::uint32_t>::max();
    steps.add(static_cast<std::uint32_t>(step));
  }
  out_.box("stts", [&] {
    out_.put32(0);
    out_.put32(steps.runs().size());
    for (const auto& [count, step] : steps.runs()) {
      out_.put32(count);
      out_.put32(step);
    }
  });
}

/// Without the box, every sample is a key.
void IndexWriter::writeKeys(const SampleTable& samples) {
  if (std::ranges::all_of(samples.samples, &SampleTable::Sample::isKey)) {
    return;
  }
  out_.box("stss", [&] {
    out_.put32(0);
    out_.put32(static_cast<std::uint64_t>(
        std::ranges::count_if(samples.samples, &SampleTable::Sample::isKey)));
    for (std::size_t i = 0; i < samples.samples.size(); ++i) {
      if (samples.samples[i].isKey) {
        out_.put32(i + 1);
      }
    }
  });
}

void IndexWriter::writeChunks(const SampleTable& samples) {
  RunLengths counts;
  for (const auto& chunk : samples.chunks) {
    counts.add(chunk.sampleCount);
  }
  out_.box("stsc", [&] {
    out_.put32(0);
    out_.put32(counts.runs().size());
    std::uint32_t firstChunk = 1;
    for (const auto& [chunkCount, sampleCount] : counts.runs()) {
      out_.put32(firstChunk);
      out_.put32(sampleCount);
      out_.put32(1);  // the one description of the samples
      firstChunk += chunkCount;
    }
  });
  out_.box("co64", [&] {
    out_.put32(0);
    out_.put32(samples.chunks.size());
    for (const auto& chunk : samples.chunks) {
      out_.put64(chunk.position);
    }
  });
}

void IndexWriter::writeSizes(const SampleTable& samples) {
  out_.box("stsz", [&] {
    out_.put32(0);
    out_.put32(0);  // no common size
    out_.put32(samples.samples.size());
    for (const auto& sample : samples.samples) {
      out_.put32(sample.size);
    }
  });
}

}  // namespace

std::optional<std::vector<std::uint8_t>> finishedIndex(ByteView unfinished,
                                                       std::span<const SampleTable> tracks) {
  const auto content = contentOf(unfinished, "moov");
  return content ? IndexWriter(tracks).write(*content) : std::nullopt;
}

}  // namespace vesk::media
