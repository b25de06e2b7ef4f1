#pragma once

#include <cstdint>
#include <vector>

#include "media/I420Picture.h"

namespace vesk::media {

/// Pictures of a page of dense coloured text that scrolls: what a screen can show that is hard to
/// encode and yet common. The same for the same size each time.
class ScrollingText {
 public:
  /// Width and height must be positive and even.
  ScrollingText(int width, int height);

  /// Draws the next picture, of the page's size, over all of `picture`.
  void drawNext(I420Picture& picture);

 private:
  /// A row of dots, each of which covers 2×2 pixels.
  struct Row {
    std::vector<std::uint8_t> luma;  ///< a pixel each
    std::vector<std::uint8_t> cb;    ///< a dot each, as is cr
    std::vector<std::uint8_t> cr;
  };

  std::vector<Row> rows_;  ///< after the last comes the first
  std::size_t top_ = 0;
};

}  // namespace vesk::media
