#pragma once

#include "media/I420Picture.h"
#include "media/LibavHandles.h"
#include "media/PictureConverter.h"

namespace vesk::media {

/// The largest rectangle of a picture's proportions in a target of even size, in its middle, with
/// even corners. All sizes are positive.
[[nodiscard]] PixelRect fittedRect(int pictureWidth, int pictureHeight, int targetWidth,
                                   int targetHeight) noexcept;

/// Converts pictures of any size to BT.709 limited range, each scaled to fit its target and put in
/// the middle on black. One of the target's size is converted as convertToI420 does. To be used by
/// one thread at a time.
class PictureFitter {
 public:
  /// Overwrites all of `target`. False without memory, or for a picture that has no size; what is
  /// in the target is then of no meaning.
  [[nodiscard]] bool convert(const BgraView& source, I420Picture& target);

 private:
  struct Sizes {
    int width = 0;
    int height = 0;
    PixelRect place;
    bool operator==(const Sizes&) const = default;
  };
  [[nodiscard]] bool scale(const BgraView& source, PixelRect place, I420Picture& target);

  Sizes sizes_;  ///< that `scaler_` is for; they seldom change
  ScalerPtr scaler_;
};

}  // namespace vesk::media
