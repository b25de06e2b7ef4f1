#include "capture/camera/UprightPicture.h"

#include <libyuv.h>

#include <array>
#include <cstdlib>
#include <utility>

namespace vesk::capture::camera {
namespace {

/// The shape of one plane.
struct Shape {
  std::size_t rowBytes = 0;
  int rows = 0;
};

struct Plane {
  const std::uint8_t* data = nullptr;
  int stride = 0;
};

using Planes = std::array<Plane, 3>;

std::vector<Shape> shapesOf(PixelLayout layout, PixelSize size) {
  const auto width = static_cast<std::size_t>(size.width);
  const std::size_t halfWidth = (width + 1) / 2;
  const int halfHeight = (size.height + 1) / 2;
  switch (layout) {
    case PixelLayout::bgrx:
    case PixelLayout::rgbx:
      return {{4 * width, size.height}};
    case PixelLayout::yuy2:
      return {{4 * halfWidth, size.height}};
    case PixelLayout::nv12:
      return {{width, size.height}, {2 * halfWidth, halfHeight}};
    case PixelLayout::i420:
      return {{width, size.height}, {halfWidth, halfHeight}, {halfWidth, halfHeight}};
    case PixelLayout::mjpeg:
      return {};
  }
  return {};
}

/// The stride of a plane that follows one whose stride is known.
std::size_t strideBeside(std::size_t firstStride, const Shape& first, const Shape& shape) {
  return firstStride == first.rowBytes ? shape.rowBytes
                                       : firstStride * shape.rowBytes / first.rowBytes;
}

/// Where the planes lie; nothing when they do not fit into the pieces.
std::optional<Planes> planesIn(const RawPicture& raw, const std::vector<Shape>& shapes) {
  if (raw.pieces.empty()) return std::nullopt;
  const bool isOnePiece = raw.pieces.size() < shapes.size();
  Planes planes;
  std::size_t offset = 0;
  for (std::size_t index = 0; index < shapes.size(); ++index) {
    const Shape& shape = shapes[index];
    const RawPicture::Piece& piece = raw.pieces[isOnePiece ? 0 : index];
    auto stride = static_cast<std::size_t>(std::abs(piece.stride));
    if (stride == 0) stride = isOnePiece && index > 0 ? shapes[0].rowBytes : shape.rowBytes;
    if (isOnePiece && index > 0) stride = strideBeside(stride, shapes[0], shape);
    const std::size_t begin = isOnePiece ? offset : 0;
    const std::size_t needed = stride * static_cast<std::size_t>(shape.rows - 1) + shape.rowBytes;
    if (stride < shape.rowBytes || piece.bytes.size() < begin ||
        piece.bytes.size() - begin < needed) {
      return std::nullopt;
    }
    planes.at(index) = {piece.bytes.data() + begin, static_cast<int>(stride)};
    offset = begin + stride * static_cast<std::size_t>(shape.rows);
  }
  return planes;
}

/// @param height negative for a picture whose bottom row comes first.
int convertPlanes(PixelLayout layout, const Planes& planes, std::uint8_t* target, int targetStride,
                  int width, int height) {
  const auto& [first, second, third] = planes;
  switch (layout) {
    case PixelLayout::bgrx:
      return libyuv::ARGBCopy(first.data, first.stride, target, targetStride, width, height);
    case PixelLayout::rgbx:
      return libyuv::ABGRToARGB(first.data, first.stride, target, targetStride, width, height);
    case PixelLayout::yuy2:
      return libyuv::YUY2ToARGB(first.data, first.stride, target, targetStride, width, height);
    case PixelLayout::nv12:
      return libyuv::NV12ToARGB(first.data, first.stride, second.data, second.stride, target,
                                targetStride, width, height);
    case PixelLayout::i420:
      return libyuv::I420ToARGB(first.data, first.stride, second.data, second.stride, third.data,
                                third.stride, target, targetStride, width, height);
    case PixelLayout::mjpeg:
      break;
  }
  return -1;
}

}  // namespace

void UprightPicture::Pixels::makeOpaque() {
  for (std::size_t index = 3; index < bytes.size(); index += 4) bytes[index] = 255;
}

void UprightPicture::Pixels::resize(PixelSize newSize) {
  if (size == newSize) return;
  size = newSize;
  bytes.resize(4 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
}

std::optional<media::BgraView> UprightPicture::convert(const RawPicture& raw, Turn turn) {
  const auto [width, height] = raw.size;
  if (width <= 0 || height <= 0 || raw.pieces.empty()) return std::nullopt;
  pixels_.resize(raw.size);
  if (raw.layout == PixelLayout::mjpeg) {
    const auto file = raw.pieces[0].bytes;
    if (libyuv::MJPGToARGB(file.data(), file.size(), pixels_.data(), pixels_.stride(), width,
                           height, width, height) != 0) {
      return std::nullopt;
    }
  } else {
    const auto planes = planesIn(raw, shapesOf(raw.layout, raw.size));
    const bool isBottomUp = raw.pieces[0].stride < 0;
    if (!planes || convertPlanes(raw.layout, *planes, pixels_.data(), pixels_.stride(), width,
                                 isBottomUp ? -height : height) != 0) {
      return std::nullopt;
    }
  }
  pixels_.makeOpaque();
  turnBy(turn);
  return media::BgraView{.data = pixels_.data(),
                         .stride = pixels_.stride(),
                         .width = pixels_.size.width,
                         .height = pixels_.size.height};
}

void UprightPicture::turnBy(Turn turn) {
  if (turn.quartersClockwise != 0) {
    const auto [width, height] = pixels_.size;
    turned_.resize(turn.quartersClockwise == 2 ? PixelSize{width, height}
                                               : PixelSize{height, width});
    libyuv::ARGBRotate(pixels_.data(), pixels_.stride(), turned_.data(), turned_.stride(), width,
                       height, static_cast<libyuv::RotationMode>(90 * turn.quartersClockwise));
    std::swap(pixels_, turned_);
  }
  if (turn.isMirrored) {
    turned_.resize(pixels_.size);
    libyuv::ARGBMirror(pixels_.data(), pixels_.stride(), turned_.data(), turned_.stride(),
                       pixels_.size.width, pixels_.size.height);
    std::swap(pixels_, turned_);
  }
}

}  // namespace vesk::capture::camera
