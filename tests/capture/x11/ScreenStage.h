#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "capture/contract/Heard.h"
#include "capture/x11/PaintingClient.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/X11ScreenSource.h"

namespace vesk::capture::x11::test {

/// What is left of a frame after its callback.
struct KeptFrame {
  ScreenFrame::Status status = ScreenFrame::Status::idle;
  media::HostTime stamp{};
  std::optional<package::Rect> contentRect;
  PixelSize size;
  std::vector<std::uint32_t> pixels;  ///< 0xAARRGGBB; none of an idle one

  std::uint32_t at(int x, int y) const {
    return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) +
                     static_cast<std::size_t>(x));
  }
};

KeptFrame kept(const ScreenFrame& frame);

/// A stream and what came of it.
class Watched {
 public:
  Watched(ScreenSource& source, const ScreenRequest& request);

  /// Waits for a complete frame whose pixel has the colour, 0xRRGGBB, among those after `mark`;
  /// whether one came.
  bool shows(int x, int y, std::uint32_t colour, std::size_t mark = 0) const;
  /// Waits until so many frames came after this call, and gives them.
  std::vector<KeptFrame> next(std::size_t count) const;
  /// How many came so far.
  std::size_t mark() const { return frames_.count(); }
  std::vector<KeptFrame> since(std::size_t mark) const;
  /// The last complete one.
  KeptFrame picture() const;
  /// Waits until nothing new has come for a while.
  bool comesToRest() const;

  const contract::Heard<ScreenStreamEnd>& ends() const { return ends_; }
  void end() { listening_.reset(); }

 private:
  contract::Heard<KeptFrame> frames_;
  contract::Heard<ScreenStreamEnd> ends_;
  std::unique_ptr<Listening> listening_;
};

std::size_t completeCount(const std::vector<KeptFrame>& frames);

}  // namespace vesk::capture::x11::test
