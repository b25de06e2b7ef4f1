#include "capture/pipewire/TickCount.h"

#include <cmath>
#include <cstdlib>

#include "media/StereoSample.h"

namespace vesk::capture::pipewire {
namespace {

constexpr std::int64_t resamplerTremble = 32;  // samples

}  // namespace

std::int64_t TickCount::positionOf(const Block& block) {
  if (latest_) {
    const auto passed = static_cast<double>(block.ticks - latest_->ticks) * media::soundRate /
                        static_cast<double>(block.tickRate);
    const std::int64_t gap = std::llround(passed) - latest_->samples;
    const bool isExact = block.tickRate == media::soundRate;
    position_ += latest_->samples + (isExact || std::abs(gap) > resamplerTremble ? gap : 0);
  }
  latest_ = block;
  return position_;
}

}  // namespace vesk::capture::pipewire
