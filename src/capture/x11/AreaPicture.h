#pragma once

#include "capture/x11/PixelReader.h"

namespace vesk::capture::x11 {

/// The picture of an area of the screen, black where the area is beyond the screen's edge. What has
/// not been read again stays.
class AreaPicture {
 public:
  /// @param area on the screen, whose size the picture has.
  /// @param connection must outlive the picture.
  static std::expected<AreaPicture, ReadFailure> create(const Connection& connection,
                                                        const media::PixelRect& area);

  [[nodiscard]] const media::PixelRect& area() const { return area_; }
  [[nodiscard]] Pixels pixels() const;

  /// Makes all of it black.
  void clear();

  /// Reads what the screen shows now in at least this part.
  /// @param rect on the screen, within the area and the screen.
  std::expected<void, ReadFailure> read(const media::PixelRect& rect);

 private:
  AreaPicture(const Connection& connection, const media::PixelRect& area, SharedMemory memory);

  const Connection* connection_;
  media::PixelRect area_;
  SharedMemory memory_;
  PixelReader reader_;
};

}  // namespace vesk::capture::x11
