#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <vector>

#include "capture/PointerSampler.h"
#include "capture/contract/CameraSourceContract.h"
#include "capture/fake/FakeCameraSource.h"

namespace vesk::capture {
namespace {

using namespace std::chrono_literals;
using fake::FakeCameraSource;

class FakeCameraRig {
 public:
  CameraSource& source() { return source_; }
  void show(std::uint32_t colour) { colour_ = colour; }
  void breakDown() {
    source_.setDevices({});
    source_.end({.message = "摄像头已拔出"});
  }

 private:
  FakeCameraSource source_;
  std::atomic<std::uint32_t> colour_ = 0;
  PointerSampler camera_{[this](double now) {
    source_.show(std::chrono::duration_cast<media::HostTime>(std::chrono::duration<double>{now}),
                 colour_);
  }};
};

auto listen(FakeCameraSource& source, std::vector<contract::SeenCameraFrame>& frames) {
  return source.listen(
      source.devices().front(), {.width = 16, .height = 8},
      [&](const CameraFrame& frame) { frames.push_back(contract::seen(frame)); },
      [](const BackendError&) {});
}

TEST(FakeCameraSource, framesArriveWithTheirStampsAndPixels) {
  FakeCameraSource source;
  std::vector<contract::SeenCameraFrame> frames;
  const auto listening = listen(source, frames);
  source.show(4ms, 0x336699);
  ASSERT_EQ(frames.size(), 1U);
  EXPECT_EQ(frames[0].stamp, 4ms);
  EXPECT_EQ(frames[0].centre, 0x336699U);
  EXPECT_EQ(frames[0].size, (PixelSize{.width = 16, .height = 8}));
}

TEST(FakeCameraSource, aRefusalTellsItsCause) {
  FakeCameraSource source;
  std::vector<contract::SeenCameraFrame> frames;
  const CameraRefusal busy{.cause = CameraRefusal::Cause::busy, .message = "正在使用"};
  source.refuse(busy);
  EXPECT_EQ(listen(source, frames).error(), busy);
  EXPECT_EQ(source.lastRequest()->device, source.devices().front());
  source.refuse(std::nullopt);
  EXPECT_TRUE(listen(source, frames).has_value());
}

TEST(FakeCameraSource, itHasTheCamerasThatItIsGiven) {
  FakeCameraSource source;
  const std::vector<CameraDevice> devices{{.id = "a", .name = "甲", .type = "PipeWire"},
                                          {.id = "b", .name = "乙", .type = "V4L2"}};
  source.setDevices(devices);
  EXPECT_EQ(source.devices(), devices);
}

}  // namespace

namespace contract {
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, CameraSourceContract, FakeCameraRig);
}  // namespace contract

}  // namespace vesk::capture
