#pragma once

#include <optional>

#include "capture/x11/SharedMemory.h"

namespace vesk::capture::x11 {

/// Reads pixels of any drawable, one rectangle at a time.
class PixelReader {
 public:
  /// @param connection must outlive the reader.
  explicit PixelReader(const Connection& connection) : connection_{connection} {}

  /// Valid until the next call.
  std::expected<Pixels, ReadFailure> read(std::uint32_t drawable, const media::PixelRect& rect);

 private:
  const Connection& connection_;
  std::optional<SharedMemory> memory_;  ///< as large as the largest that was read
};

}  // namespace vesk::capture::x11
