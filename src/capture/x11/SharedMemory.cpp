#include "capture/x11/SharedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cassert>
#include <cstring>
#include <utility>

namespace vesk::capture::x11 {
namespace {

constexpr std::uint8_t badAlloc = 11;
constexpr std::uint32_t allPlanes = ~0U;

std::size_t areaOf(const media::PixelRect& rect) {
  return static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height);
}

bool canShareMemory(const Connection& connection) {
  const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_shm_id);
  if (!extension || extension->present == 0) return false;
  const auto version = owned(xcb_shm_query_version_reply(
      connection.get(), xcb_shm_query_version(connection.get()), nullptr));
  return version && (version->major_version > 1 || version->minor_version >= 2);
}

}  // namespace

ScreenStreamEnd endBecauseOf(ReadFailure failure) {
  if (failure == ReadFailure::resources) {
    return {.cause = ScreenStreamEnd::Cause::resources, .message = "内存不足，无法读取屏幕画面"};
  }
  return {.cause = ScreenStreamEnd::Cause::other, .message = "与显示服务器的连接已断开"};
}

std::expected<SharedMemory, ReadFailure> SharedMemory::create(const Connection& connection,
                                                              std::size_t pixelCount) {
  const std::size_t bytes = pixelCount * sizeof(std::uint32_t);
  const int descriptor = ::memfd_create("vesk.screen", MFD_CLOEXEC);
  if (descriptor < 0) return std::unexpected(ReadFailure::resources);
  // Without the pages set aside, a lack of memory would end the process at the first access.
  const bool hasPages = ::posix_fallocate(descriptor, 0, static_cast<off_t>(bytes)) == 0;
  void* const memory =
      hasPages ? ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0)
               : MAP_FAILED;
  if (memory == MAP_FAILED) {
    ::close(descriptor);
    return std::unexpected(ReadFailure::resources);
  }
  SharedMemory result{connection, static_cast<std::uint32_t*>(memory), pixelCount};
  result.attach(descriptor);
  return result;
}

SharedMemory::SharedMemory(const Connection& connection, std::uint32_t* data,
                           std::size_t pixelCount)
    : connection_{&connection}, data_{data}, pixelCount_{pixelCount} {}

SharedMemory::SharedMemory(SharedMemory&& other) noexcept
    : connection_{other.connection_},
      data_{std::exchange(other.data_, nullptr)},
      pixelCount_{std::exchange(other.pixelCount_, 0)},
      segment_{std::exchange(other.segment_, 0)} {}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
  std::swap(connection_, other.connection_);
  std::swap(data_, other.data_);
  std::swap(pixelCount_, other.pixelCount_);
  std::swap(segment_, other.segment_);
  return *this;
}

SharedMemory::~SharedMemory() {
  if (segment_ != 0) xcb_shm_detach(connection_->get(), segment_);
  if (data_) ::munmap(data_, pixelCount_ * sizeof *data_);
}

/// Takes the descriptor over.
void SharedMemory::attach(int descriptor) {
  if (!canShareMemory(*connection_)) {
    ::close(descriptor);
    return;
  }
  const std::uint32_t segment = xcb_generate_id(connection_->get());
  const auto cookie = xcb_shm_attach_fd_checked(connection_->get(), segment, descriptor, 0);
  if (!owned(xcb_request_check(connection_->get(), cookie))) segment_ = segment;
}

std::expected<Pixels, ReadFailure> SharedMemory::read(std::uint32_t drawable,
                                                      const media::PixelRect& rect,
                                                      std::size_t first) {
  assert(first + areaOf(rect) <= pixelCount_);
  const auto done = segment_ != 0 ? readThroughMemory(drawable, rect, first)
                                  : readThroughConnection(drawable, rect, first);
  if (!done) return std::unexpected(done.error());
  return Pixels{
      .data = data_ + first, .stride = rect.width, .width = rect.width, .height = rect.height};
}

std::expected<void, ReadFailure> SharedMemory::readThroughMemory(std::uint32_t drawable,
                                                                 const media::PixelRect& rect,
                                                                 std::size_t first) const {
  const auto cookie = xcb_shm_get_image(
      connection_->get(), drawable, static_cast<std::int16_t>(rect.x),
      static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width),
      static_cast<std::uint16_t>(rect.height), allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP, segment_,
      static_cast<std::uint32_t>(first * sizeof *data_));
  xcb_generic_error_t* error = nullptr;
  const auto reply = owned(xcb_shm_get_image_reply(connection_->get(), cookie, &error));
  const auto ownedError = owned(error);
  if (!reply) return std::unexpected(failureOf(error ? error->error_code : 0));
  return {};
}

std::expected<void, ReadFailure> SharedMemory::readThroughConnection(std::uint32_t drawable,
                                                                     const media::PixelRect& rect,
                                                                     std::size_t first) const {
  const auto cookie = xcb_get_image(
      connection_->get(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, static_cast<std::int16_t>(rect.x),
      static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width),
      static_cast<std::uint16_t>(rect.height), allPlanes);
  xcb_generic_error_t* error = nullptr;
  const auto reply = owned(xcb_get_image_reply(connection_->get(), cookie, &error));
  const auto ownedError = owned(error);
  if (!reply) return std::unexpected(failureOf(error ? error->error_code : 0));
  const std::size_t bytes = areaOf(rect) * sizeof *data_;
  if (static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < bytes) {
    return std::unexpected(ReadFailure::unavailable);
  }
  std::memcpy(data_ + first, xcb_get_image_data(reply.get()), bytes);
  return {};
}

ReadFailure SharedMemory::failureOf(std::uint8_t errorCode) const {
  if (errorCode == badAlloc) return ReadFailure::resources;
  return connection_->isAlive() ? ReadFailure::unavailable : ReadFailure::disconnected;
}

}  // namespace vesk::capture::x11
