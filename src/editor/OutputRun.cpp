#include "editor/OutputRun.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace vesk::editor {
namespace {

/// Where the device is later than this the clock does not slide back to it.
constexpr double longestDelay = 0.1;
/// At one go, or the device would have to wait.
constexpr std::int64_t mostLeftOut = media::soundRate;

}  // namespace

void OutputRun::start(SoundOutput::Fill fill, media::HostTime now) {
  const std::scoped_lock lock{fillMutex_, clockMutex_};
  fill_ = std::move(fill);
  given_ = 0;
  clock_.emplace(now);
}

void OutputRun::stop() {
  const std::scoped_lock lock{fillMutex_, clockMutex_};
  fill_ = nullptr;
  clock_.reset();
}

double OutputRun::heard(media::HostTime now) const {
  const std::scoped_lock lock{clockMutex_};
  return clock_ ? clock_->heard(now) : 0;
}

void OutputRun::take(std::span<media::StereoSample> out, media::HostTime now,
                     media::HostTime heardAt) {
  std::ranges::fill(out, media::StereoSample{});
  const std::unique_lock lock{fillMutex_, std::try_to_lock};
  if (!lock || !fill_) return;  // it begins or ends at this moment
  leaveOut(missed(now, heardAt));
  fill_(out);
  given_ += std::ssize(out);
}

/// How many samples it is too late for; where there are none, the clock learns of the device.
std::int64_t OutputRun::missed(media::HostTime now, media::HostTime heardAt) {
  const std::unique_lock lock{clockMutex_, std::try_to_lock};
  if (!lock) return 0;
  const double next = static_cast<double>(given_) / media::soundRate;
  const double late = clock_->heard(heardAt) - next;
  if (late > longestDelay) return static_cast<std::int64_t>(late * media::soundRate);
  clock_->report(now, next - media::secondsOf(heardAt - now));
  return 0;
}

void OutputRun::leaveOut(std::int64_t count) {
  std::array<media::StereoSample, 1024> dropped{};
  for (std::int64_t rest = std::min(count, mostLeftOut); rest > 0;) {
    const auto part = std::min<std::size_t>(static_cast<std::size_t>(rest), dropped.size());
    fill_(std::span{dropped}.first(part));
    given_ += static_cast<std::int64_t>(part);
    rest -= static_cast<std::int64_t>(part);
  }
}

}  // namespace vesk::editor
