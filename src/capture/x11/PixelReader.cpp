#include "capture/x11/PixelReader.h"

#include <utility>

namespace vesk::capture::x11 {

std::expected<Pixels, ReadFailure> PixelReader::read(std::uint32_t drawable,
                                                     const media::PixelRect& rect) {
  const auto needed = static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height);
  if (!memory_ || memory_->pixelCount() < needed) {
    auto memory = SharedMemory::create(connection_, needed);
    if (!memory) return std::unexpected(memory.error());
    memory_ = std::move(*memory);
  }
  return memory_->read(drawable, rect);
}

}  // namespace vesk::capture::x11
