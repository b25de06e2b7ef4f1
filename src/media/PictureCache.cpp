#include "media/PictureCache.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vesk::media {
namespace {

double beginOf(const PictureCache::Entry& entry) {
  return entry.picture.pts;
}

bool endIsKnown(const PictureCache::Entry& entry) {
  return entry.until > entry.picture.pts;
}

}  // namespace

double PictureCache::Entry::distanceTo(double time) const noexcept {
  return std::max({picture.pts - time, time - until, 0.0});
}

void PictureCache::add(VideoFrame picture) {
  const double pts = picture.pts;
  const auto at = std::ranges::lower_bound(entries_, pts, {}, beginOf);
  if (at == entries_.end() || at->picture.pts != pts) {
    entries_.insert(at, {std::move(picture), pts});
  } else if (!endIsKnown(*at)) {
    at->picture = std::move(picture);  // of two pictures of one time the later one stands
  }
}

void PictureCache::setEnd(double pts, double until) {
  const auto at = std::ranges::lower_bound(entries_, pts, {}, beginOf);
  if (at != entries_.end() && at->picture.pts == pts) {
    at->until = until;
  }
}

void PictureCache::trim(double time) {
  auto after = static_cast<std::size_t>(std::distance(firstAfter(time), entries_.cend()));
  while (entries_.size() > capacity_.total) {
    if (after > capacity_.after) {
      entries_.pop_back();
      --after;
    } else {
      entries_.pop_front();
    }
  }
}

const PictureCache::Entry* PictureCache::standingAt(double time) const {
  const auto after = firstAfter(time);
  if (after == entries_.begin()) return nullptr;
  const Entry& entry = *std::prev(after);
  return time < entry.until ? &entry : nullptr;
}

const PictureCache::Entry* PictureCache::nearestTo(double time) const {
  if (entries_.empty()) return nullptr;
  const auto after = firstAfter(time);
  if (after == entries_.begin()) return &*after;
  const auto before = std::prev(after);
  const bool beforeIsNearer =
      after == entries_.end() || before->distanceTo(time) <= after->distanceTo(time);
  return beforeIsNearer ? &*before : &*after;
}

PictureCache::Run PictureCache::runAround(double time) const {
  const auto standing = std::prev(firstAfter(time));
  auto first = standing;
  while (first != entries_.begin() && std::prev(first)->until == beginOf(*first)) {
    --first;
  }
  auto last = standing;
  while (std::next(last) != entries_.end() && beginOf(*std::next(last)) == last->until) {
    ++last;
  }
  return {.before = static_cast<std::size_t>(std::distance(first, standing)),
          .after = static_cast<std::size_t>(std::distance(standing, last)),
          .begin = beginOf(*first),
          .end = last->until};
}

PictureCache::Entries::const_iterator PictureCache::firstAfter(double time) const {
  return std::ranges::upper_bound(entries_, time, {}, beginOf);
}

}  // namespace vesk::media
