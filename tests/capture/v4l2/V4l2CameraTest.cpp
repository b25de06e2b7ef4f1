#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "capture/contract/Heard.h"
#include "capture/v4l2/FakeVideoDevice.h"
#include "capture/v4l2/V4l2Camera.h"

namespace vesk::capture::v4l2::test {
namespace {

using contract::Heard;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelSize hd{1280, 720};
constexpr PixelSize tiny{2, 2};

using Options = FakeVideoDevice::Options;

Options tinyCamera() {
  return {.formats = {{V4L2_PIX_FMT_YUYV, {tiny}, 30}}};
}

media::HostTime now() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

/// A frame of the tiny camera in one colour: red, or grey.
std::vector<std::uint8_t> red() {
  return {81, 90, 81, 240, 81, 90, 81, 240};
}
std::vector<std::uint8_t> grey() {
  return {126, 128, 126, 128, 126, 128, 126, 128};
}

struct SeenFrame {
  media::HostTime stamp{};
  PixelSize size;
  int red = 0;
  int green = 0;
};

/// A camera that somebody looks through.
class Look {
 public:
  explicit Look(Options options, PixelSize size = tiny) : device_{std::move(options)} {
    auto listening = cameras_.listen(
        {.id = "/dev/video0"}, size,
        [this](const CameraFrame& frame) {
          frames.add({.stamp = frame.stamp,
                      .size = {frame.pixels.width, frame.pixels.height},
                      .red = frame.pixels.data[2],
                      .green = frame.pixels.data[1]});
        },
        [this](const BackendError& reason) { ends.add(reason.message); });
    if (listening) {
      listening_ = std::move(*listening);
    } else {
      refusal = listening.error();
    }
  }

  FakeVideoDevice& device() { return device_; }
  void stop() { listening_.reset(); }

  Heard<SeenFrame> frames;
  Heard<std::string> ends;
  std::optional<CameraRefusal> refusal;

 private:
  FakeVideoDevice device_;
  V4l2Camera cameras_{device_};
  std::unique_ptr<Listening> listening_;
};

std::vector<CameraDevice> devicesOf(Options options) {
  FakeVideoDevice device{std::move(options)};
  auto devices = V4l2Camera{device}.devices();
  EXPECT_EQ(device.leaks(), 0);
  return devices;
}

TEST(V4l2Camera, isOfferedByTheNameOfItsCard) {
  EXPECT_THAT(devicesOf({}), ElementsAre(CameraDevice{"/dev/video0", "USB 摄像头", "V4L2"}));
}

TEST(V4l2Camera, isNoDeviceThatDoesNotTakePictures) {
  EXPECT_THAT(devicesOf({.abilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING}), IsEmpty());
  EXPECT_THAT(devicesOf({.abilities = V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING}), IsEmpty());
}

TEST(V4l2Camera, isNoDeviceThatDoesNotStream) {
  EXPECT_THAT(devicesOf({.abilities = V4L2_CAP_VIDEO_CAPTURE}), IsEmpty());
}

TEST(V4l2Camera, isNoDeviceWithoutAFormatThatCanBeRead) {
  EXPECT_THAT(devicesOf({.formats = {{V4L2_PIX_FMT_SBGGR10, {hd}, 30}}}), IsEmpty());
}

TEST(V4l2Camera, isNoDeviceThatCannotBeOpened) {
  EXPECT_THAT(devicesOf({.openError = EACCES}), IsEmpty());
}

TEST(V4l2Camera, isSetToTheFormatThatFitsBest) {
  Look look{{.formats = {{V4L2_PIX_FMT_YUYV, {{640, 480}, hd}, 10},
                         {V4L2_PIX_FMT_SBGGR10, {hd}, 60},
                         {V4L2_PIX_FMT_MJPEG, {{1920, 1080}, hd}, 60}}},
            hd};
  EXPECT_FALSE(look.refusal);
  EXPECT_EQ(look.device().chosenFourcc(), V4L2_PIX_FMT_MJPEG);
  EXPECT_EQ(look.device().chosenSize(), hd);
  EXPECT_EQ(look.device().chosenRate(), 30);
}

TEST(V4l2Camera, showsItsFrames) {
  Look look{tinyCamera()};
  const media::HostTime taken = std::chrono::floor<std::chrono::microseconds>(now());
  look.device().take({.bytes = red(), .stamp = taken});
  ASSERT_TRUE(look.frames.comesTo(1));
  const SeenFrame frame = look.frames.all().front();
  EXPECT_EQ(frame.size, tiny);
  EXPECT_NEAR(frame.red, 255, 3);
  EXPECT_NEAR(frame.green, 0, 3);
  EXPECT_EQ(frame.stamp, taken);
}

TEST(V4l2Camera, readsRowsWithSpaceBehindThem) {
  Options options = tinyCamera();
  options.padding = 4;
  Look look{options};
  look.device().take({.bytes = {81, 90, 81, 240, 0, 0, 0, 0, 81, 90, 81, 240}, .stamp = now()});
  ASSERT_TRUE(look.frames.comesTo(1));
  EXPECT_NEAR(look.frames.all().front().red, 255, 3);
}

TEST(V4l2Camera, readsNv12) {
  Look look{{.formats = {{V4L2_PIX_FMT_NV12, {tiny}, 30}}}};
  look.device().take({.bytes = {81, 81, 81, 81, 90, 240}, .stamp = now()});
  ASSERT_TRUE(look.frames.comesTo(1));
  EXPECT_NEAR(look.frames.all().front().red, 255, 3);
}

TEST(V4l2Camera, goesByTheArrivalWhereTheDriverGoesByAnotherClock) {
  Look look{tinyCamera()};
  const media::HostTime before = now();
  look.device().take({.bytes = red(),
                      .stamp = before - milliseconds{500},
                      .flags = V4L2_BUF_FLAG_TIMESTAMP_UNKNOWN});
  ASSERT_TRUE(look.frames.comesTo(1));
  EXPECT_GE(look.frames.all().front().stamp, before);
}

TEST(V4l2Camera, givesItsMemoryBack) {
  Look look{tinyCamera()};
  for (std::size_t count = 1; count <= 20; ++count) {
    look.device().take({.bytes = red(), .stamp = now()});
    ASSERT_TRUE(look.frames.comesTo(count));
  }
  look.stop();
  EXPECT_EQ(look.device().leaks(), 0);
  EXPECT_EQ(look.ends.count(), 0U);
}

TEST(V4l2Camera, leavesDamagedAndCutFramesOut) {
  Look look{tinyCamera()};
  look.device().take({.bytes = red(), .stamp = now(), .flags = V4L2_BUF_FLAG_ERROR});
  std::this_thread::sleep_for(milliseconds{20});
  look.device().take({.bytes = {81, 90}, .stamp = now()});
  std::this_thread::sleep_for(milliseconds{20});
  look.device().take({.bytes = grey(), .stamp = now()});
  ASSERT_TRUE(look.frames.comesTo(1));
  EXPECT_NEAR(look.frames.all().front().green, 128, 3);
}

TEST(V4l2Camera, isBusyWhereSomebodyElseUsesIt) {
  const CameraRefusal busy{CameraRefusal::Cause::busy, "摄像头正被其他程序使用"};
  EXPECT_EQ(Look{{.openError = EBUSY}}.refusal, busy);
  EXPECT_EQ(Look{{.formatError = EBUSY}}.refusal, busy);
  Look look{{.streamError = EBUSY}};
  EXPECT_EQ(look.refusal, busy);
  EXPECT_EQ(look.device().leaks(), 0);
}

TEST(V4l2Camera, tellsWhatElseIsInTheWay) {
  using enum CameraRefusal::Cause;
  EXPECT_EQ(Look{{.openError = EACCES}}.refusal, (CameraRefusal{other, "没有使用摄像头的权限"}));
  EXPECT_EQ(Look{{.openError = ENODEV}}.refusal, (CameraRefusal{other, "找不到这个摄像头"}));
  EXPECT_EQ(Look{{.streamError = EIO}}.refusal, (CameraRefusal{other, "摄像头无法启动"}));
  EXPECT_EQ(Look{{.formats = {}}}.refusal, (CameraRefusal{other, "摄像头没有可用的画面格式"}));
}

TEST(V4l2Camera, endsWhenItIsUnplugged) {
  Look look{tinyCamera()};
  look.device().take({.bytes = red(), .stamp = now()});
  ASSERT_TRUE(look.frames.comesTo(1));
  look.device().unplug();
  ASSERT_TRUE(look.ends.comesTo(1));
  look.stop();
  EXPECT_THAT(look.ends.all(), ElementsAre("摄像头已断开"));
  EXPECT_EQ(look.device().leaks(), 0);
}

}  // namespace
}  // namespace vesk::capture::v4l2::test
