#include "capture/pipewire/SeenFrames.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace vesk::capture::pipewire::test {

SeenFrames::SeenFrames(CameraSource& source, const CameraDevice& device, PixelSize size) {
  auto listening = source.listen(
      device, size,
      [this](const CameraFrame& frame) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        const std::scoped_lock lock{mutex_};
        const media::BgraView& pixels = frame.pixels;
        frames_.push_back({frame.stamp, now, {pixels.width, pixels.height}});
        latest_.clear();
        for (int row = 0; row < pixels.height; ++row) {
          const std::uint8_t* begin = pixels.data + row * pixels.stride;
          latest_.insert(latest_.end(), begin, begin + std::ptrdiff_t{4} * pixels.width);
        }
      },
      [this](const BackendError& reason) {
        const std::scoped_lock lock{mutex_};
        ends_.push_back(reason.message);
      });
  if (!listening) throw std::runtime_error(listening.error().message);
  listening_ = std::move(*listening);
}

std::vector<SeenFrames::Frame> SeenFrames::frames() const {
  const std::scoped_lock lock{mutex_};
  return frames_;
}

std::array<int, 3> SeenFrames::pixel(int x, int y) const {
  const std::scoped_lock lock{mutex_};
  const auto at = static_cast<std::size_t>(4 * (y * frames_.back().size.width + x));
  return {latest_.at(at), latest_.at(at + 1), latest_.at(at + 2)};
}

std::vector<std::string> SeenFrames::ends() const {
  const std::scoped_lock lock{mutex_};
  return ends_;
}

}  // namespace vesk::capture::pipewire::test
