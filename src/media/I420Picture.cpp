#include "media/I420Picture.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

namespace vesk::media {
namespace {

constexpr std::align_val_t alignment{64};
constexpr std::uint8_t blackLuma = 16;
constexpr std::uint8_t neutralChroma = 128;

constexpr std::ptrdiff_t alignedStride(int width) {
  constexpr auto unit = static_cast<std::ptrdiff_t>(alignment);
  return (width + unit - 1) / unit * unit;
}

}  // namespace

void I420Picture::Release::operator()(std::uint8_t* memory) const noexcept {
  ::operator delete[](memory, alignment);
}

I420Picture::I420Picture(int width, int height) {
  assert(width > 0 && height > 0 && width % 2 == 0 && height % 2 == 0);
  const auto lumaStride = alignedStride(width);
  const auto chromaStride = alignedStride(width / 2);
  const auto lumaSize = lumaStride * height;
  const auto chromaSize = chromaStride * (height / 2);
  size_ = static_cast<std::size_t>(lumaSize + 2 * chromaSize);
  memory_.reset(static_cast<std::uint8_t*>(::operator new[](size_, alignment)));

  auto* luma = memory_.get();
  auto* chroma = luma + lumaSize;
  std::fill(luma, chroma, blackLuma);
  std::fill(chroma, luma + size_, neutralChroma);
  planes_ = {Plane{luma, lumaStride, width, height},
             Plane{chroma, chromaStride, width / 2, height / 2},
             Plane{chroma + chromaSize, chromaStride, width / 2, height / 2}};
}

void I420Picture::copyFrom(const I420Picture& other) {
  assert(width() == other.width() && height() == other.height());
  std::memcpy(memory_.get(), other.memory_.get(), size_);
}

}  // namespace vesk::media
