#include "capture/x11/AreaPicture.h"

#include <cstddef>
#include <utility>

#include "capture/x11/PixelRegion.h"
#include "capture/x11/Pixels.h"

namespace vesk::capture::x11 {
std::expected<AreaPicture, ReadFailure> AreaPicture::create(const Connection& connection,
                                                            const media::PixelRect& area) {
  const auto count = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height);
  auto memory = SharedMemory::create(connection, count);
  if (!memory) return std::unexpected(memory.error());
  AreaPicture picture{connection, area, std::move(*memory)};
  picture.clear();
  return picture;
}

AreaPicture::AreaPicture(const Connection& connection, const media::PixelRect& area,
                         SharedMemory memory)
    : connection_{&connection}, area_{area}, memory_{std::move(memory)}, reader_{connection} {}

Pixels AreaPicture::pixels() const {
  return {
      .data = memory_.data(), .stride = area_.width, .width = area_.width, .height = area_.height};
}

void AreaPicture::clear() {
  fill(pixels(), black);
}

// Whole rows go straight to their place.
std::expected<void, ReadFailure> AreaPicture::read(const media::PixelRect& rect) {
  const media::PixelRect place = moved(rect, -area_.x, -area_.y);
  const bool isWholeRows = rect.width == area_.width;
  const auto pixels =
      isWholeRows
          ? memory_.read(connection_->root(), rect,
                         static_cast<std::size_t>(place.y) * static_cast<std::size_t>(area_.width))
          : reader_.read(connection_->root(), rect);
  if (!pixels) return std::unexpected(pixels.error());
  makeOpaque(*pixels);
  if (!isWholeRows) copy(*pixels, part(this->pixels(), place));
  return {};
}

}  // namespace vesk::capture::x11
