#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "capture/Clock.h"
#include "capture/ScreenSource.h"
#include "capture/contract/Heard.h"

// What every screen source keeps to. Instantiate the suite in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(X11, ScreenSourceContract, X11ScreenRig);
namespace vesk::capture::contract {

struct OpenedWindow {
  std::uint32_t id = 0;
  ScreenSize size;  ///< with its decoration; 64 units wide and high at least
};

/// A screen source and the hands that change its screen. One is made for each test; it throws when
/// it cannot be set up. Colours are 0xRRGGBB. An action returns when it has been asked for and need
/// not wait until it is seen, but a window that was opened is there.
template <typename Rig>
concept ScreenSourceRig =
    std::default_initializable<Rig> && requires(Rig rig, std::uint32_t colour, std::uint32_t id) {
      { rig.source() } -> std::convertible_to<ScreenSource&>;
      /// A part of the screen with whole and even numbers, 64 units wide and high at least, in
      /// which nothing is seen but what the rig puts there.
      { rig.area() } -> std::convertible_to<package::Rect>;
      /// Gives the whole area one colour.
      rig.draw(colour);
      /// Covers the whole area with a window of this program's own.
      rig.coverAreaWithOwnWindow(colour);
      /// Opens a window of another program, of one colour within its decoration, away from the
      /// area.
      { rig.openWindow(colour) } -> std::convertible_to<OpenedWindow>;
      /// Puts another window over the whole of it.
      rig.coverWindow(id, colour);
      rig.closeWindow(id);
    };

/// What is left of a frame after its callback.
struct SeenFrame {
  ScreenFrame::Status status = ScreenFrame::Status::idle;
  media::HostTime stamp{};
  PixelSize size;               ///< of the pixels
  std::uint32_t centre = 0;     ///< colour of the pixel in the middle
  bool isOpaqueInside = false;  ///< at the middle
};

inline SeenFrame seen(const ScreenFrame& frame) {
  SeenFrame result{.status = frame.status, .stamp = frame.stamp};
  if (frame.status != ScreenFrame::Status::complete || frame.pixels.data == nullptr) return result;
  const auto& pixels = frame.pixels;
  const auto* middle = pixels.data + (pixels.height / 2) * pixels.stride +
                       static_cast<std::ptrdiff_t>(pixels.width / 2) * 4;
  result.size = {.width = pixels.width, .height = pixels.height};
  result.centre = static_cast<std::uint32_t>(middle[2]) << 16U |
                  static_cast<std::uint32_t>(middle[1]) << 8U | middle[0];
  result.isOpaqueInside = middle[3] == 0xFF;
  return result;
}

template <ScreenSourceRig Rig>
class ScreenSourceContract : public ::testing::Test {
 protected:
  static constexpr std::uint32_t red = 0xC02010;
  static constexpr std::uint32_t green = 0x10B040;
  static constexpr std::uint32_t blue = 0x2040D0;

  static bool isComplete(const SeenFrame& frame) {
    return frame.status == ScreenFrame::Status::complete;
  }
  static bool isIdle(const SeenFrame& frame) { return frame.status == ScreenFrame::Status::idle; }
  static auto shows(std::uint32_t colour) {
    return [colour](const SeenFrame& frame) { return isComplete(frame) && frame.centre == colour; };
  }

  ScreenRequest areaRequest(int fps = 60) {
    const package::Rect area = rig_.area();
    return {
        .subject = ScreenRequest::Area{area},
        .size = {.width = static_cast<int>(area.width), .height = static_cast<int>(area.height)},
        .scaleFactor = 1,
        .fps = fps};
  }
  static ScreenRequest windowRequest(const OpenedWindow& window) {
    return {.subject = ScreenRequest::Window{window.id}, .size = evenPixelSize(window.size, 1)};
  }

  auto stream(const ScreenRequest& request, Heard<SeenFrame>& frames) {
    return rig_.source().stream(
        request, [&frames](const ScreenFrame& frame) { frames.add(seen(frame)); },
        [this](const ScreenStreamEnd& end) { ends_.add(end); });
  }

  Rig rig_;
  Heard<ScreenStreamEnd> ends_;
  Heard<SeenFrame> frames_;
};
TYPED_TEST_SUITE_P(ScreenSourceContract);

TYPED_TEST_P(ScreenSourceContract, aStreamBeginsWithACompleteFrameOfTheSizeAskedFor) {
  const auto request = this->areaRequest();
  const auto stream = this->stream(request, this->frames_);
  ASSERT_TRUE(stream.has_value()) << stream.error().message;
  ASSERT_TRUE(this->frames_.comesTo(1));
  const auto first = this->frames_.all().front();
  EXPECT_EQ(first.status, ScreenFrame::Status::complete);
  EXPECT_EQ(first.size, request.size);
  EXPECT_TRUE(first.isOpaqueInside);
}

TYPED_TEST_P(ScreenSourceContract, stampsRiseAndAreOfTheMonotonicClock) {
  const MonotonicClock clock;
  const double before = clock.now();
  {
    const auto stream = this->stream(this->areaRequest(), this->frames_);
    ASSERT_TRUE(stream.has_value()) << stream.error().message;
    ASSERT_TRUE(this->frames_.comesTo(10));
  }
  const double after = clock.now();
  const auto frames = this->frames_.all();
  const auto seconds = [](const SeenFrame& frame) {
    return std::chrono::duration<double>{frame.stamp}.count();
  };
  EXPECT_GE(seconds(frames.front()), before - 0.1);
  EXPECT_LE(seconds(frames.back()), after + 0.1);
  for (std::size_t i = 1; i < frames.size(); ++i) EXPECT_GT(frames[i].stamp, frames[i - 1].stamp);
}

TYPED_TEST_P(ScreenSourceContract, whatIsDrawnComesInACompleteFrame) {
  auto& rig = this->rig_;
  rig.draw(this->red);
  const auto stream = this->stream(this->areaRequest(), this->frames_);
  ASSERT_TRUE(stream.has_value()) << stream.error().message;
  EXPECT_TRUE(this->frames_.has(this->shows(this->red)));
  rig.draw(this->green);
  EXPECT_TRUE(this->frames_.has(this->shows(this->green)));
}

TYPED_TEST_P(ScreenSourceContract, aStillScreenGivesIdleFrames) {
  this->rig_.draw(this->red);
  const auto stream = this->stream(this->areaRequest(), this->frames_);
  ASSERT_TRUE(stream.has_value()) << stream.error().message;
  ASSERT_TRUE(this->frames_.has(this->shows(this->red)));
  EXPECT_TRUE(this->frames_.has(this->isIdle, this->frames_.count()));
}

TYPED_TEST_P(ScreenSourceContract, framesComeNoFasterThanAskedFor) {
  constexpr int fps = 20;
  const auto stream = this->stream(this->areaRequest(fps), this->frames_);
  ASSERT_TRUE(stream.has_value()) << stream.error().message;
  ASSERT_TRUE(this->frames_.comesTo(11));
  const auto frames = this->frames_.all();
  const std::chrono::duration<double> tenFrames = frames[10].stamp - frames[0].stamp;
  // One frame may be late and the next in time, which shortens what lies between.
  EXPECT_GE(tenFrames.count(), 9.0 / fps);
}

TYPED_TEST_P(ScreenSourceContract, aStreamThatWasEndedGivesNoMoreFrames) {
  auto& rig = this->rig_;
  Heard<SeenFrame> others;
  const auto other = this->stream(this->areaRequest(), others);
  ASSERT_TRUE(other.has_value()) << other.error().message;
  auto stream = this->stream(this->areaRequest(), this->frames_);
  ASSERT_TRUE(stream.has_value()) << stream.error().message;
  ASSERT_TRUE(this->frames_.comesTo(2));
  stream->reset();
  const auto count = this->frames_.count();
  rig.draw(this->blue);
  ASSERT_TRUE(others.has(this->shows(this->blue)));
  EXPECT_EQ(this->frames_.count(), count);
  EXPECT_EQ(this->ends_.count(), 0U);
}

TYPED_TEST_P(ScreenSourceContract, theProgramsOwnWindowsAreNotInThePictureOfAnArea) {
  auto& rig = this->rig_;
  rig.draw(this->red);
  rig.coverAreaWithOwnWindow(this->blue);
  const auto stream = this->stream(this->areaRequest(), this->frames_);
  ASSERT_TRUE(stream.has_value()) << stream.error().message;
  ASSERT_TRUE(this->frames_.has(this->shows(this->red)));
  rig.draw(this->green);
  ASSERT_TRUE(this->frames_.has(this->shows(this->green)));
  for (const auto& frame : this->frames_.all()) EXPECT_FALSE(this->shows(this->blue)(frame));
}

TYPED_TEST_P(ScreenSourceContract, aCoveredWindowIsShownUncovered) {
  auto& rig = this->rig_;
  const OpenedWindow window = rig.openWindow(this->green);
  rig.coverWindow(window.id, this->blue);
  const auto stream = this->stream(this->windowRequest(window), this->frames_);
  ASSERT_TRUE(stream.has_value()) << stream.error().message;
  EXPECT_TRUE(this->frames_.has(this->shows(this->green)));
  for (const auto& frame : this->frames_.all()) EXPECT_FALSE(this->shows(this->blue)(frame));
}

TYPED_TEST_P(ScreenSourceContract, aWindowThatHasGoneCannotBeStreamed) {
  auto& rig = this->rig_;
  const OpenedWindow window = rig.openWindow(this->green);
  rig.closeWindow(window.id);
  EXPECT_TRUE(comesTrue([&] { return !this->stream(this->windowRequest(window), this->frames_); }));
}

REGISTER_TYPED_TEST_SUITE_P(ScreenSourceContract, aStreamBeginsWithACompleteFrameOfTheSizeAskedFor,
                            stampsRiseAndAreOfTheMonotonicClock, whatIsDrawnComesInACompleteFrame,
                            aStillScreenGivesIdleFrames, framesComeNoFasterThanAskedFor,
                            aStreamThatWasEndedGivesNoMoreFrames,
                            theProgramsOwnWindowsAreNotInThePictureOfAnArea,
                            aCoveredWindowIsShownUncovered, aWindowThatHasGoneCannotBeStreamed);

}  // namespace vesk::capture::contract
