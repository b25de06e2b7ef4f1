#pragma once

#include <memory>

#include "media/I420Picture.h"

namespace vesk::media {

/// Lends pictures of one size and takes each back when its last user lets it go, so that a long
/// export touches no fresh memory. Any thread may acquire and let go, and a lent picture may
/// outlive the pool.
class PicturePool {
 public:
  PicturePool(int width, int height);

  /// A picture that nobody else holds. Its pixels are those of its last use.
  [[nodiscard]] std::shared_ptr<I420Picture> acquire();

 private:
  struct Shelf;
  int width_;
  int height_;
  std::shared_ptr<Shelf> shelf_;
};

}  // namespace vesk::media
