#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>

#include "capture/ScreenSource.h"
#include "capture/x11/Connection.h"
#include "capture/x11/Pixels.h"

namespace vesk::capture::x11 {

/// Why pixels could not be read.
enum class ReadFailure : std::uint8_t {
  unavailable,   ///< what was to be read is not there or smaller than asked for
  resources,     ///< memory ran out, here or in the server
  disconnected,  ///< the server has gone
};

/// The same as the end of a stream.
ScreenStreamEnd endBecauseOf(ReadFailure failure);

/// Memory into which the display server writes pixels by itself. Where it cannot, they come through
/// the connection. To be used by one thread at a time.
class SharedMemory {
 public:
  /// @param connection must outlive the memory.
  static std::expected<SharedMemory, ReadFailure> create(const Connection& connection,
                                                         std::size_t pixelCount);
  SharedMemory(SharedMemory&& other) noexcept;
  SharedMemory& operator=(SharedMemory&& other) noexcept;
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
  ~SharedMemory();

  [[nodiscard]] std::uint32_t* data() const noexcept { return data_; }
  [[nodiscard]] std::size_t pixelCount() const noexcept { return pixelCount_; }

  /// Reads a part of a window, with all that lies on it, or of a pixmap, row behind row.
  /// @param rect must lie inside the drawable.
  /// @param first the index of the pixel at which the result begins.
  std::expected<Pixels, ReadFailure> read(std::uint32_t drawable, const media::PixelRect& rect,
                                          std::size_t first = 0);

 private:
  SharedMemory(const Connection& connection, std::uint32_t* data, std::size_t pixelCount);
  void attach(int descriptor);
  std::expected<void, ReadFailure> readThroughMemory(std::uint32_t drawable,
                                                     const media::PixelRect& rect,
                                                     std::size_t first) const;
  std::expected<void, ReadFailure> readThroughConnection(std::uint32_t drawable,
                                                         const media::PixelRect& rect,
                                                         std::size_t first) const;
  [[nodiscard]] ReadFailure failureOf(std::uint8_t errorCode) const;

  const Connection* connection_;
  std::uint32_t* data_;
  std::size_t pixelCount_;
  std::uint32_t segment_ = 0;  ///< the server's name for the memory; 0 when it cannot reach it
};

}  // namespace vesk::capture::x11
