#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "capture/x11/AreaPicture.h"
#include "capture/x11/KeptBackground.h"
#include "capture/x11/ScreenEvents.h"
#include "capture/x11/ScreenView.h"
#include "capture/x11/UnderlayPatch.h"
#include "capture/x11/WindowStack.h"

namespace vesk::capture::x11 {

/// An area of the screen without this program's own windows.
class AreaView final : public ScreenView {
 public:
  /// @param size of the picture; the area begins where `rect` does.
  static std::expected<std::unique_ptr<AreaView>, BackendError> open(
      Connection connection, std::shared_ptr<KeptBackground> background, const package::Rect& rect,
      PixelSize size);

  std::expected<ScreenFrame, ScreenStreamEnd> look() override;
  void abandon() override { connection_.abandon(); }

 private:
  /// A part of the picture as it was.
  struct Memory {
    media::PixelRect place;  ///< in the picture
    std::vector<std::uint32_t> pixels;
  };

  AreaView(Connection connection, std::shared_ptr<KeptBackground> background);
  void doubtChange(const PixelRegion& hiddenBefore);
  PixelRegion takeDoubt();
  void takeEvents();
  bool findScreenEdges();
  void followWindows();
  std::expected<void, ReadFailure> read();
  [[nodiscard]] std::vector<Memory> remember(const PixelRegion& region) const;
  [[nodiscard]] bool differs(const Memory& memory) const;
  [[nodiscard]] ScreenFrame frame(ScreenFrame::Status status, media::HostTime stamp) const;

  Connection connection_;
  std::shared_ptr<KeptBackground> background_;
  ScreenEvents events_;
  WindowStack stack_;
  DamageWatch damage_;
  UnderlayPatch patch_;
  std::optional<AreaPicture> picture_;
  media::PixelRect shown_;  ///< the part of the area that is on the screen
  PixelRegion unread_;      ///< what is to be read, on the screen
  PixelRegion uncovered_;   ///< where windows of our own were lately, on the screen
  int uncoveredFor_ = 0;    ///< how many looks more that counts
  bool isScreenResized_ = true;
  bool isFirst_ = true;
};

}  // namespace vesk::capture::x11
