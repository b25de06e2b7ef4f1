#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>

#include "capture/CameraSource.h"
#include "capture/Clock.h"
#include "capture/contract/Heard.h"

// What every camera source keeps to. Instantiate the suite in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(PipeWire, CameraSourceContract, PipeWireCameraRig);
namespace vesk::capture::contract {

/// A camera source with one camera at least, what stands before that, and the hand that breaks it.
/// One is made for each test; it throws when it cannot be set up. An action may return before it is
/// seen.
template <typename Rig>
concept CameraSourceRig =
    std::default_initializable<Rig> && requires(Rig rig, std::uint32_t colour) {
      { rig.source() } -> std::convertible_to<CameraSource&>;
      rig.show(colour);  ///< 0xRRGGBB, in the whole picture of the first camera
      rig.breakDown();   ///< takes the first camera away
    };

/// What is left of a frame after its callback.
struct SeenCameraFrame {
  media::HostTime stamp{};
  PixelSize size;
  std::uint32_t centre = 0;     ///< colour of the pixel in the middle
  bool isOpaqueInside = false;  ///< at the middle
};

inline SeenCameraFrame seen(const CameraFrame& frame) {
  const auto& pixels = frame.pixels;
  SeenCameraFrame result{.stamp = frame.stamp,
                         .size = {.width = pixels.width, .height = pixels.height}};
  if (pixels.data == nullptr) return result;
  const auto* middle = pixels.data + (pixels.height / 2) * pixels.stride +
                       static_cast<std::ptrdiff_t>(pixels.width / 2) * 4;
  result.centre = static_cast<std::uint32_t>(middle[2]) << 16U |
                  static_cast<std::uint32_t>(middle[1]) << 8U | middle[0];
  result.isOpaqueInside = middle[3] == 0xFF;
  return result;
}

template <CameraSourceRig Rig>
class CameraSourceContract : public ::testing::Test {
 protected:
  static constexpr PixelSize size{.width = 640, .height = 360};
  static constexpr std::uint32_t red = 0xC02010;
  static constexpr std::uint32_t blue = 0x2040D0;

  /// The colour may have gone through a camera's format and back.
  static auto shows(std::uint32_t colour) {
    return [colour](const SeenCameraFrame& frame) {
      for (const unsigned shift : {0U, 8U, 16U}) {
        const int seenValue = static_cast<int>(frame.centre >> shift & 0xFFU);
        if (std::abs(seenValue - static_cast<int>(colour >> shift & 0xFFU)) > 24) return false;
      }
      return true;
    };
  }

  /// The first camera, once there is one.
  CameraDevice camera() {
    EXPECT_TRUE(comesTrue([&] { return !rig_.source().devices().empty(); }));
    const auto devices = rig_.source().devices();
    return devices.empty() ? CameraDevice{} : devices.front();
  }

  auto listen(const CameraDevice& device, Heard<SeenCameraFrame>& frames) {
    return rig_.source().listen(
        device, size, [&frames](const CameraFrame& frame) { frames.add(seen(frame)); },
        [this](const BackendError& error) { ends_.add(error); });
  }

  Rig rig_;
  Heard<BackendError> ends_;
  Heard<SeenCameraFrame> frames_;
};
TYPED_TEST_SUITE_P(CameraSourceContract);

TYPED_TEST_P(CameraSourceContract, camerasHaveNamesAndDifferentNumbers) {
  (void)this->camera();
  const auto devices = this->rig_.source().devices();
  std::set<std::string> ids;
  for (const auto& device : devices) {
    EXPECT_FALSE(device.name.empty());
    EXPECT_FALSE(device.type.empty());
    ids.insert(device.id);
  }
  EXPECT_EQ(ids.size(), devices.size());
}

TYPED_TEST_P(CameraSourceContract, framesAreOpaqueAndStampedByTheMonotonicClock) {
  const MonotonicClock clock;
  const auto device = this->camera();
  const double before = clock.now();
  {
    const auto listening = this->listen(device, this->frames_);
    ASSERT_TRUE(listening.has_value()) << listening.error().message;
    ASSERT_TRUE(this->frames_.comesTo(5));
  }
  const double after = clock.now();
  media::HostTime last{};
  for (const auto& frame : this->frames_.all()) {
    const double seconds = std::chrono::duration<double>{frame.stamp}.count();
    EXPECT_GE(seconds, before - 1);
    EXPECT_LE(seconds, after + 0.1);
    EXPECT_GT(frame.stamp, last);
    EXPECT_GT(frame.size.width, 0);
    EXPECT_GT(frame.size.height, 0);
    EXPECT_TRUE(frame.isOpaqueInside);
    last = frame.stamp;
  }
}

TYPED_TEST_P(CameraSourceContract, whatStandsBeforeTheCameraIsSeen) {
  const auto device = this->camera();
  this->rig_.show(this->red);
  const auto listening = this->listen(device, this->frames_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  EXPECT_TRUE(this->frames_.has(this->shows(this->red)));
  this->rig_.show(this->blue);
  EXPECT_TRUE(this->frames_.has(this->shows(this->blue)));
}

TYPED_TEST_P(CameraSourceContract, aCameraThatNobodyHasIsRefused) {
  const auto listening =
      this->listen({.id = "no such camera", .name = "没有", .type = "none"}, this->frames_);
  ASSERT_FALSE(listening.has_value());
  EXPECT_FALSE(listening.error().message.empty());
}

TYPED_TEST_P(CameraSourceContract, whoHasEndedListeningSeesNothing) {
  const auto device = this->camera();
  this->rig_.show(this->red);
  auto listening = this->listen(device, this->frames_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  ASSERT_TRUE(this->frames_.comesTo(2));
  listening->reset();
  const auto count = this->frames_.count();
  Heard<SeenCameraFrame> later;
  this->rig_.show(this->blue);
  const auto again = this->listen(device, later);
  ASSERT_TRUE(again.has_value()) << again.error().message;
  ASSERT_TRUE(later.has(this->shows(this->blue)));
  EXPECT_EQ(this->frames_.count(), count);
  EXPECT_EQ(this->ends_.count(), 0U);
}

TYPED_TEST_P(CameraSourceContract, aCameraThatGoesAwaySaysSoOnce) {
  const auto listening = this->listen(this->camera(), this->frames_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  ASSERT_TRUE(this->frames_.comesTo(1));
  this->rig_.breakDown();
  ASSERT_TRUE(this->ends_.comesTo(1));
  EXPECT_FALSE(this->ends_.all().front().message.empty());
  EXPECT_EQ(this->ends_.count(), 1U);
}

REGISTER_TYPED_TEST_SUITE_P(CameraSourceContract, camerasHaveNamesAndDifferentNumbers,
                            framesAreOpaqueAndStampedByTheMonotonicClock,
                            whatStandsBeforeTheCameraIsSeen, aCameraThatNobodyHasIsRefused,
                            whoHasEndedListeningSeesNothing, aCameraThatGoesAwaySaysSoOnce);

}  // namespace vesk::capture::contract
