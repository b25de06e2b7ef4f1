#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "capture/x11/DamageWatch.h"
#include "capture/x11/KeptBackground.h"
#include "capture/x11/PixelReader.h"
#include "capture/x11/WindowStack.h"

namespace vesk::capture::x11 {

/// What lies under the windows of this program: the picture of the other windows there, put
/// together from what each of them shows, over the background. All windows on the screen must be
/// redirected. Positions are on the screen.
class UnderlayPatch {
 public:
  /// Both must outlive the patch.
  UnderlayPatch(const Connection& connection, KeptBackground& background);

  /// Where the patch is.
  [[nodiscard]] const PixelRegion& region() const { return region_; }

  /// To be called when windows have changed, with the region that is to be covered.
  void follow(const std::vector<StackedWindow>& windows, const PixelRegion& region);
  /// Must be told of every event.
  void note(const ScreenEvent& event);
  /// Asks whether something in it has been drawn.
  void takeDamage();

  /// Whether it is to be put together anew.
  [[nodiscard]] bool isStale() const { return isStale_ && !region_.isEmpty(); }
  std::expected<void, ReadFailure> refresh();

  /// Puts the patch into a picture.
  /// @param origin what of the screen the picture shows; the patch lies inside it.
  void paint(const Pixels& picture, const media::PixelRect& origin);

 private:
  /// A window of which something is in the patch.
  struct Layer {
    StackedWindow window;
    PixelRegion visible;  ///< on the screen
  };
  /// A rectangle of the patch.
  struct Tile {
    media::PixelRect rect;
    std::vector<std::uint32_t> pixels;
    Pixels view();
  };

  [[nodiscard]] PixelRegion shapeOf(const StackedWindow& window) const;
  void watchLayers();
  std::expected<void, ReadFailure> drawBackground();
  std::expected<void, ReadFailure> drawLayer(const Layer& layer);
  std::expected<void, ReadFailure> drawBackgroundPicture(std::uint32_t pixmap,
                                                         const media::PixelRect& rect);
  template <typename Draw>
  void intoTiles(const media::PixelRect& rect, Draw draw);

  const Connection& connection_;
  KeptBackground& background_;
  PixelReader reader_;
  std::uint32_t backgroundName_;  ///< of the root's property that names the background's pixmap
  PixelRegion region_;
  std::vector<Layer> layers_;  ///< the lowest first
  PixelRegion bare_;           ///< where no window lies under this program's
  std::vector<Tile> tiles_;
  std::map<std::uint32_t, std::unique_ptr<DamageWatch>> watches_;  ///< by window
  bool isStale_ = false;
};

}  // namespace vesk::capture::x11
