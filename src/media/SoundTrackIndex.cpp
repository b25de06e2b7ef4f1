#include "media/SoundTrackIndex.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
}

namespace vesk::media {
namespace {

constexpr AVRational indexTick{1, soundRate};
/// Some writers round stamps to 1/600 s: what strays less than this from its place follows on.
constexpr std::int64_t jitter = soundRate / 500;

}  // namespace

std::int64_t SoundPlace::position(int rate) const {
  return runStart + av_rescale_q(taken, {1, std::max(rate, 1)}, indexTick);
}

bool SoundPlace::goesOnAt(std::int64_t stamped, int rate) const {
  return std::abs(stamped - position(rate)) <= jitter;
}

SoundTrackIndex::SoundTrackIndex(AVStream& track, std::int64_t firstStamp, int firstLength)
    : track_(&track), firstStamp_(firstStamp), firstLength_(firstLength) {}

std::optional<std::int64_t> SoundTrackIndex::stampAt(std::int64_t position) const {
  const std::int64_t stamp = av_rescale_q(position, indexTick, track_->time_base);
  const int entry = av_index_search_timestamp(track_, stamp, AVSEEK_FLAG_BACKWARD);
  const AVIndexEntry* found = avformat_index_get_entry(track_, entry);
  if (found == nullptr || found->timestamp <= firstStamp_) {
    return std::nullopt;
  }
  return stamp;
}

std::optional<SoundPlace> SoundTrackIndex::placeOf(std::int64_t stamp) {
  if (entryCount_ != avformat_index_get_entries_count(track_)) {
    findPlaces();
  }
  const int entry = av_index_search_timestamp(track_, stamp, AVSEEK_FLAG_ANY);
  const AVIndexEntry* found = avformat_index_get_entry(track_, entry);
  if (found == nullptr || found->timestamp != stamp || entry <= firstEntry_) {
    return std::nullopt;
  }
  return places_[static_cast<std::size_t>(entry - firstEntry_ - 1)];
}

/// Walks through the index as a reader does through the frames.
void SoundTrackIndex::findPlaces() {
  entryCount_ = avformat_index_get_entries_count(track_);
  firstEntry_ = av_index_search_timestamp(track_, firstStamp_, AVSEEK_FLAG_BACKWARD);
  const int rate = track_->codecpar->sample_rate;
  SoundPlace place{.runStart = positionOf(firstStamp_), .taken = firstLength_};
  places_.clear();
  places_.reserve(static_cast<std::size_t>(std::max(entryCount_ - firstEntry_ - 1, 0)));
  for (int entry = firstEntry_ + 1; entry < entryCount_; ++entry) {
    const std::int64_t stamped = positionOf(avformat_index_get_entry(track_, entry)->timestamp);
    if (!place.goesOnAt(stamped, rate)) {
      place = {.runStart = stamped, .taken = 0};
    }
    places_.push_back(place);
    place.taken += lengthOf(entry);
  }
}

/// In samples at the track's own rate.
std::int64_t SoundTrackIndex::lengthOf(int entry) const {
  const AVIndexEntry& packet = *avformat_index_get_entry(track_, entry);
  if (const int length = av_get_audio_frame_duration2(track_->codecpar, packet.size); length > 0) {
    return length;
  }
  const std::int64_t start = packet.timestamp;  // the next call may move what this one gave
  const AVIndexEntry* next = avformat_index_get_entry(track_, entry + 1);
  return next == nullptr ? 0
                         : av_rescale_q(next->timestamp - start, track_->time_base,
                                        {1, std::max(track_->codecpar->sample_rate, 1)});
}

std::int64_t SoundTrackIndex::positionOf(std::int64_t stamp) const {
  return av_rescale_q(stamp, track_->time_base, indexTick);
}

}  // namespace vesk::media
