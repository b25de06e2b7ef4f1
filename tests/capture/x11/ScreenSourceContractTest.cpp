#include "capture/contract/ScreenSourceContract.h"
#include "capture/x11/PaintingClient.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/X11ScreenSource.h"

namespace vesk::capture::x11::test {

/// A real server whose screen two programs change: this one and another.
class X11ScreenRig {
 public:
  X11ScreenRig()
      : source_{std::move(X11ScreenSource::open(display_.name()).value())},
        canvas_{other_.open(pixels_, 0)} {}

  ScreenSource& source() { return *source_; }
  package::Rect area() const { return {.x = 300, .y = 200, .width = 128, .height = 96}; }
  void draw(std::uint32_t colour) {
    other_.draw(canvas_, {.width = pixels_.width, .height = pixels_.height}, colour);
  }
  void coverAreaWithOwnWindow(std::uint32_t colour) { own_.open(pixels_, colour); }
  contract::OpenedWindow openWindow(std::uint32_t colour) {
    return {.id = other_.open(window_, colour),
            .size = {.width = window_.width, .height = window_.height}};
  }
  void coverWindow(std::uint32_t /*id*/, std::uint32_t colour) { other_.open(window_, colour); }
  void closeWindow(std::uint32_t id) { other_.close(id); }

 private:
  static constexpr media::PixelRect pixels_{.x = 300, .y = 200, .width = 128, .height = 96};
  static constexpr media::PixelRect window_{.x = 10, .y = 10, .width = 90, .height = 70};

  TestDisplay display_;
  PaintingClient other_{display_.name(), PaintingClient::Process::another};
  PaintingClient own_{display_.name(), PaintingClient::Process::own};
  std::unique_ptr<X11ScreenSource> source_;
  std::uint32_t canvas_;  ///< a window, as the server draws nothing on the screen under a window
};

}  // namespace vesk::capture::x11::test

namespace vesk::capture::contract {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, ScreenSourceContract, x11::test::X11ScreenRig);

}  // namespace vesk::capture::contract
