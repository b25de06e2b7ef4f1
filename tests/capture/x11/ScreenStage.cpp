#include "capture/x11/ScreenStage.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace vesk::capture::x11::test {
namespace {

using Status = ScreenFrame::Status;

constexpr std::uint32_t opaque = 0xFF000000;

}  // namespace

KeptFrame kept(const ScreenFrame& frame) {
  KeptFrame result{.status = frame.status, .stamp = frame.stamp, .contentRect = frame.contentRect};
  if (frame.status == Status::idle) return result;
  const auto& view = frame.pixels;
  result.size = {.width = view.width, .height = view.height};
  result.pixels.resize(static_cast<std::size_t>(view.width) *
                       static_cast<std::size_t>(view.height));
  const std::size_t rowBytes = static_cast<std::size_t>(view.width) * 4;
  for (int y = 0; y < view.height; ++y) {
    std::memcpy(result.pixels.data() + static_cast<std::ptrdiff_t>(y) * view.width,
                view.data + y * view.stride, rowBytes);
  }
  return result;
}

Watched::Watched(ScreenSource& source, const ScreenRequest& request) {
  auto listening = source.stream(
      request, [this](const ScreenFrame& frame) { frames_.add(kept(frame)); }, ends_.adder());
  if (!listening) throw std::runtime_error(listening.error().message);
  listening_ = std::move(*listening);
  if (!frames_.comesTo(1)) throw std::runtime_error("no frame");
}

bool Watched::shows(int x, int y, std::uint32_t colour, std::size_t mark) const {
  return frames_.has(
      [&](const KeptFrame& frame) {
        return frame.status == Status::complete && frame.at(x, y) == (opaque | colour);
      },
      mark);
}

std::vector<KeptFrame> Watched::next(std::size_t count) const {
  const std::size_t begin = mark();
  if (!frames_.comesTo(begin + count)) throw std::runtime_error("no more frames");
  auto frames = since(begin);
  frames.resize(count);
  return frames;
}

std::vector<KeptFrame> Watched::since(std::size_t mark) const {
  auto frames = frames_.all();
  frames.erase(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(mark));
  return frames;
}

KeptFrame Watched::picture() const {
  const auto frames = frames_.all();
  const auto last = std::find_if(frames.rbegin(), frames.rend(), [](const KeptFrame& frame) {
    return frame.status == Status::complete;
  });
  if (last == frames.rend()) throw std::runtime_error("no complete frame");
  return *last;
}

bool Watched::comesToRest() const {
  for (int attempt = 0; attempt < 100; ++attempt) {
    if (completeCount(next(3)) == 0) return true;
  }
  return false;
}

std::size_t completeCount(const std::vector<KeptFrame>& frames) {
  return static_cast<std::size_t>(std::ranges::count(frames, Status::complete, &KeptFrame::status));
}

}  // namespace vesk::capture::x11::test
