#include "media/PictureFeed.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstddef>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>

#include "media/PictureCache.h"

namespace vesk::media {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t mebibyte = std::size_t{1} << 20;
/// What one feed may hold. At 1080p these are 64 pictures, at 4K 16.
constexpr std::size_t cacheBytes = 192 * mebibyte;
/// Enough to even out the cost of key frames.
constexpr std::size_t aheadBytes = 48 * mebibyte;
constexpr std::size_t mostAhead = 8;
constexpr std::size_t mostCachedPictures = 512;

/// More threads gain little for one movie, and each holds pictures of its own.
constexpr unsigned mostDecoderThreads = 3;

/// For so long after a single seek what was shown stays, rather than flash through what is decoded
/// on the way.
constexpr auto patience = 60ms;
/// Pictures on the way come no faster than this.
constexpr auto standInInterval = 15ms;

/// A picture on a grid belongs to its own index, whatever the last bit of its time says.
constexpr double gridTolerance = 0.000001;
constexpr double latestTime = 1e9;

int decoderThreads() {
  return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, mostDecoderThreads));
}

std::size_t bytesOf(const VideoFrame& picture) {
  std::ptrdiff_t bytes = 0;
  for (const VideoPlane& plane : picture.planes) {
    bytes += plane.stride * plane.height;
  }
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(bytes, 1));
}

/// How many pictures of a movie are held, for what.
struct Shares {
  PictureCache::Capacity cache;
  std::size_t ahead = 0;    ///< decoded before the playhead gets there
  std::size_t retreat = 0;  ///< kept ready for a playhead that moves backwards
};

Shares sharesFor(std::size_t pictureBytes) {
  const std::size_t total =
      std::clamp(cacheBytes / pictureBytes, std::size_t{6}, mostCachedPictures);
  const std::size_t ahead = std::clamp(aheadBytes / pictureBytes, std::size_t{1}, mostAhead);
  return {.cache = {.total = total, .after = std::max(total / 4, ahead + 2)},
          .ahead = ahead,
          .retreat = total / 4};
}

}  // namespace

/// The thread works towards one goal at a time: the picture that was asked for, then the ones after
/// it, then, if the playhead moves backwards, the ones before it. One picture is decoded per step;
/// between two steps the goal may change.
class PictureFeed::Worker {
 public:
  Worker(VideoReader reader, std::optional<VideoFrame> first, Arrival arrival);
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker();

  [[nodiscard]] const VideoInfo& info() const noexcept { return info_; }
  [[nodiscard]] double firstPTS() const noexcept { return firstPTS_; }
  void seek(double time);
  std::optional<VideoFrame> pictureAt(double time);
  bool isExactAt(double time) const;
  std::optional<VideoFrame> waitForPictureAt(double time);
  std::int64_t decodedPictures() const;

 private:
  using Entry = PictureCache::Entry;

  /// What a step yielded: a picture, or none at the end of what can be read.
  struct Step {
    std::optional<VideoFrame> before;  ///< the picture before it, where that is known
    std::optional<VideoFrame> picture;
  };

  // On the caller's thread, the lock held.
  double placeOf(double time) const;
  void moveTo(double place);
  std::optional<VideoFrame> show();

  // On either, the lock held.
  bool isSettledAt(double place) const;
  const Entry* standIn() const;

  // On the feed's thread.
  void work();
  bool hasNews();
  std::optional<double> goal() const;
  Step decodeTowards(double goal);
  void takeIn(Step step, double goal, std::int64_t request);

  const VideoInfo info_;
  const double firstPTS_;
  const Shares shares_;
  const Arrival arrival_;

  VideoReader reader_;                 ///< the feed's thread's alone, but for interrupt()
  std::optional<VideoFrame> decoded_;  ///< the same: what it gave last
  /// The same: where it was sent last. It may have had to begin before that.
  std::optional<double> soughtKeyFrame_;

  mutable std::mutex mutex_;
  std::condition_variable moved_;
  std::condition_variable settled_;
  PictureCache cache_;
  double playhead_;
  std::int64_t request_ = 0;  ///< counts the moves of the playhead
  bool isGivenUp_ = false;    ///< what the playhead asks for cannot be read
  bool isRetreating_ = false;
  bool isSuperseded_ = false;  ///< the request before this one was not met
  bool isAnnounced_ = false;   ///< the caller knows, or was told, that its request is met
  Clock::time_point askedAt_ = Clock::now();
  Clock::time_point toldAt_;
  std::optional<Entry> shown_;
  std::int64_t decodedPictures_ = 0;
  bool isStopping_ = false;
  std::jthread thread_;
};

PictureFeed::Worker::Worker(VideoReader reader, std::optional<VideoFrame> first, Arrival arrival)
    : info_(reader.info()),
      firstPTS_(first ? first->pts : 0),
      shares_(sharesFor(first ? bytesOf(*first) : 1)),
      arrival_(std::move(arrival)),
      reader_(std::move(reader)),
      cache_(shares_.cache),
      playhead_(firstPTS_) {
  if (first) {
    decoded_ = *first;
    cache_.add(*std::move(first));
    decodedPictures_ = 1;
  }
  thread_ = std::jthread([this] { work(); });
}

PictureFeed::Worker::~Worker() {
  {
    const std::scoped_lock lock(mutex_);
    isStopping_ = true;
  }
  reader_.interrupt();
  moved_.notify_one();
}

void PictureFeed::Worker::seek(double time) {
  const std::scoped_lock lock(mutex_);
  const double place = placeOf(time);
  if (place != playhead_ && !isSettledAt(playhead_)) isSuperseded_ = true;
  moveTo(place);
  isAnnounced_ = false;
  moved_.notify_one();
}

std::optional<VideoFrame> PictureFeed::Worker::pictureAt(double time) {
  const std::scoped_lock lock(mutex_);
  moveTo(placeOf(time));
  return show();
}

bool PictureFeed::Worker::isExactAt(double time) const {
  const std::scoped_lock lock(mutex_);
  return isSettledAt(placeOf(time));
}

std::optional<VideoFrame> PictureFeed::Worker::waitForPictureAt(double time) {
  std::unique_lock lock(mutex_);
  moveTo(placeOf(time));
  settled_.wait(lock, [&] { return isSettledAt(playhead_); });
  return show();
}

std::int64_t PictureFeed::Worker::decodedPictures() const {
  const std::scoped_lock lock(mutex_);
  return decodedPictures_;
}

/// Where the playhead goes for a time asked for: before the first picture that one stands.
double PictureFeed::Worker::placeOf(double time) const {
  const double wanted = std::isnan(time) ? 0 : time + gridTolerance;
  return std::max(std::min(wanted, latestTime), firstPTS_);
}

void PictureFeed::Worker::moveTo(double place) {
  if (place == playhead_) return;
  if (isSettledAt(playhead_)) {
    askedAt_ = Clock::now();
    isSuperseded_ = false;
  }
  const bool isAtHand = cache_.standingAt(place) != nullptr;
  isRetreating_ = isAtHand && place < playhead_;
  isAnnounced_ = isAtHand;
  isGivenUp_ = false;
  playhead_ = place;
  ++request_;
  moved_.notify_one();
}

std::optional<VideoFrame> PictureFeed::Worker::show() {
  if (const Entry* exact = cache_.standingAt(playhead_)) {
    shown_ = *exact;
  } else if (const Entry* better = standIn()) {
    shown_ = *better;
  }
  return shown_ ? std::optional(shown_->picture) : std::nullopt;
}

bool PictureFeed::Worker::isSettledAt(double place) const {
  return cache_.standingAt(place) != nullptr || (isGivenUp_ && place == playhead_);
}

/// What may be shown instead of what is not there yet, if it is nearer than what is shown.
const PictureFeed::Worker::Entry* PictureFeed::Worker::standIn() const {
  const bool isWelcome =
      !shown_ || isSuperseded_ || isGivenUp_ || Clock::now() - askedAt_ > patience;
  const Entry* nearest = isWelcome ? cache_.nearestTo(playhead_) : nullptr;
  const bool isBetter = nearest != nullptr &&
                        (!shown_ || nearest->distanceTo(playhead_) < shown_->distanceTo(playhead_));
  return isBetter ? nearest : nullptr;
}

void PictureFeed::Worker::work() {
  std::unique_lock lock(mutex_);
  while (!isStopping_) {
    if (hasNews()) {
      lock.unlock();
      if (arrival_) arrival_();
      lock.lock();
      continue;
    }
    const std::optional<double> next = goal();
    if (!next) {
      moved_.wait(lock);
      continue;
    }
    const std::int64_t request = request_;
    lock.unlock();
    Step step = decodeTowards(*next);
    lock.lock();
    takeIn(std::move(step), *next, request);
    if (isSettledAt(playhead_)) settled_.notify_one();
  }
}

/// Whether the caller must be told of something, which then counts as told.
bool PictureFeed::Worker::hasNews() {
  if (isSettledAt(playhead_)) {
    return !std::exchange(isAnnounced_, true);
  }
  const auto now = Clock::now();
  const bool isNews = now - toldAt_ >= standInInterval && standIn() != nullptr;
  if (isNews) toldAt_ = now;
  return isNews;
}

/// The time whose picture is to be found next; nothing when all is at hand.
std::optional<double> PictureFeed::Worker::goal() const {
  if (isGivenUp_) return std::nullopt;
  if (cache_.standingAt(playhead_) == nullptr) return playhead_;
  const PictureCache::Run run = cache_.runAround(playhead_);
  if (run.after < shares_.ahead && std::isfinite(run.end)) return run.end;
  if (isRetreating_ && run.before < shares_.retreat && run.begin > firstPTS_) {
    return std::nextafter(run.begin, -std::numeric_limits<double>::infinity());
  }
  return std::nullopt;
}

PictureFeed::Worker::Step PictureFeed::Worker::decodeTowards(double goal) {
  const double keyFrame = reader_.keyFrameBefore(goal);
  const bool isOnTheWay = decoded_ && decoded_->pts <= goal &&
                          (keyFrame <= decoded_->pts || keyFrame == soughtKeyFrame_);
  if (!isOnTheWay) {
    decoded_.reset();
    soughtKeyFrame_ = keyFrame;
    if (!reader_.seekKeyFrame(goal)) return {};
  }
  auto picture = reader_.next().value_or(std::nullopt);
  return {.before = std::exchange(decoded_, picture), .picture = picture};
}

void PictureFeed::Worker::takeIn(Step step, double goal, std::int64_t request) {
  constexpr double forEver = std::numeric_limits<double>::infinity();
  const double pts = step.picture ? step.picture->pts : forEver;
  if (step.before) {
    const double before = step.before->pts;
    cache_.add(*std::move(step.before));  // may have been let go for a playhead elsewhere
    cache_.setEnd(before, pts);
  }
  if (step.picture) {
    cache_.add(*std::move(step.picture));
    ++decodedPictures_;
  }
  // A damaged movie may read differently on another way. To go on trying would have no end.
  const bool isPast = pts > goal && cache_.standingAt(goal) == nullptr;
  isGivenUp_ = isGivenUp_ || (isPast && request == request_);
  cache_.trim(playhead_);
}

std::expected<std::unique_ptr<PictureFeed>, MediaError> PictureFeed::open(
    const std::filesystem::path& file, Arrival arrival) {
  auto reader = VideoReader::open(file, decoderThreads());
  if (!reader) return std::unexpected(std::move(reader.error()));
  // A movie whose pictures cannot be read is one without pictures.
  auto first = reader->next().value_or(std::nullopt);
  return std::unique_ptr<PictureFeed>(new PictureFeed(
      std::make_unique<Worker>(*std::move(reader), std::move(first), std::move(arrival))));
}

PictureFeed::PictureFeed(std::unique_ptr<Worker> worker) : worker_(std::move(worker)) {}
PictureFeed::~PictureFeed() = default;

const VideoInfo& PictureFeed::info() const noexcept {
  return worker_->info();
}

double PictureFeed::firstPTS() const noexcept {
  return worker_->firstPTS();
}

void PictureFeed::seek(double time) {
  worker_->seek(time);
}

std::optional<VideoFrame> PictureFeed::pictureAt(double time) {
  return worker_->pictureAt(time);
}

bool PictureFeed::isExactAt(double time) const {
  return worker_->isExactAt(time);
}

std::optional<VideoFrame> PictureFeed::waitForPictureAt(double time) {
  return worker_->waitForPictureAt(time);
}

std::int64_t PictureFeed::decodedPictures() const {
  return worker_->decodedPictures();
}

}  // namespace vesk::media
