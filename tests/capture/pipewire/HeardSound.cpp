#include "capture/pipewire/HeardSound.h"

#include <chrono>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>
#include <stdexcept>
#include <utility>

#include "media/StereoSample.h"

namespace vesk::capture::pipewire::test {

HeardSound::HeardSound(SoundSource& source)
    : channels_{static_cast<std::size_t>(source.channels())} {
  auto listening = source.listen(
      [this](const media::SoundBlock& block) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        const std::scoped_lock lock{mutex_};
        blocks_.push_back(
            {block.stamp, now, block.position, {block.samples.begin(), block.samples.end()}});
      },
      [this](const BackendError& reason) {
        const std::scoped_lock lock{mutex_};
        ends_.push_back(reason.message);
      });
  if (!listening) throw std::runtime_error(listening.error().message);
  listening_ = std::move(*listening);
}

std::vector<HeardSound::Block> HeardSound::blocks() const {
  const std::scoped_lock lock{mutex_};
  return blocks_;
}

std::vector<float> HeardSound::firstChannel() const {
  const std::scoped_lock lock{mutex_};
  std::vector<float> signal;
  for (const Block& block : blocks_) {
    for (std::size_t index = 0; index < block.samples.size(); index += channels_) {
      signal.push_back(block.samples[index]);
    }
  }
  return signal;
}

std::vector<std::string> HeardSound::ends() const {
  const std::scoped_lock lock{mutex_};
  return ends_;
}

std::optional<double> shareOfTone(const std::vector<float>& signal, double frequency) {
  constexpr std::size_t length = media::soundRate / 2;
  if (signal.size() < length) return std::nullopt;
  const std::span<const float> end{signal.end() - length, length};
  std::complex<double> sum;
  double power = 0;
  for (std::size_t index = 0; index < length; ++index) {
    const double angle =
        2 * std::numbers::pi * frequency * static_cast<double>(index) / media::soundRate;
    sum += static_cast<double>(end[index]) * std::polar(1.0, -angle);
    power += static_cast<double>(end[index]) * static_cast<double>(end[index]);
  }
  if (power < 1) return std::nullopt;
  return 2 * std::norm(sum) / static_cast<double>(length) / power;
}

}  // namespace vesk::capture::pipewire::test
