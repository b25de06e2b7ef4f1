#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "capture/pipewire/CameraFailure.h"
#include "capture/pipewire/PipeWireCamera.h"
#include "capture/pipewire/SeenFrames.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/pipewire/VirtualCamera.h"
#include "capture/x11/Eventually.h"
#include "media/JpegPicture.h"

namespace vesk::capture::pipewire::test {
namespace {

using camera::PixelLayout;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using x11::test::eventually;

using Colour = std::array<int, 3>;

constexpr PixelSize hd{1280, 720};

/// Every pixel tells of its place.
void paintPlaces(std::span<std::uint8_t> bytes, PixelSize size) {
  for (std::size_t index = 0; index < bytes.size() / 4; ++index) {
    const std::size_t x = index % static_cast<std::size_t>(size.width);
    const std::size_t y = index / static_cast<std::size_t>(size.width);
    bytes[4 * index] = static_cast<std::uint8_t>(x);
    bytes[4 * index + 1] = static_cast<std::uint8_t>(y);
    bytes[4 * index + 2] = static_cast<std::uint8_t>(x / 256 + 16 * (y / 256));
    bytes[4 * index + 3] = 0;
  }
}

class PipeWireCameraOfATestServer : public testing::Test {
 protected:
  CameraDevice onlyDevice() {
    EXPECT_TRUE(eventually([&] { return cameras_.devices().size() == 1; }));
    return cameras_.devices().at(0);
  }
  /// Waits until a few frames are there.
  static bool shows(const SeenFrames& seen) {
    return eventually([&] { return seen.frames().size() > 2; });
  }

  TestSoundServer server_;
  PipeWireCamera cameras_{server_.remote()};
};

TEST_F(PipeWireCameraOfATestServer, offersNothingWhereThereIsNone) {
  EXPECT_THAT(cameras_.devices(), IsEmpty());
}

TEST_F(PipeWireCameraOfATestServer, offersTheOneToBePreferredFirst) {
  const VirtualCamera front{server_.remote(), {.name = "front", .description = "前"}, {}};
  const VirtualCamera best{
      server_.remote(), {.name = "best", .description = "最好", .priority = 2000}, {}};
  ASSERT_TRUE(eventually([&] { return cameras_.devices().size() == 2; }));
  EXPECT_THAT(cameras_.devices(), ElementsAre(CameraDevice{"best", "最好", "PipeWire"},
                                              CameraDevice{"front", "前", "PipeWire"}));
}

TEST_F(PipeWireCameraOfATestServer, showsPixelsExactly) {
  const VirtualCamera camera{server_.remote(),
                             {.name = "camera", .description = "摄像头"},
                             [](auto bytes, auto) { paintPlaces(bytes, hd); }};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  EXPECT_EQ(seen.frames().back().size, hd);
  EXPECT_EQ(seen.pixel(0, 0), (Colour{0, 0, 0}));
  EXPECT_EQ(seen.pixel(1279, 719), (Colour{1279 % 256, 719 % 256, 4 + 16 * 2}));
  EXPECT_EQ(seen.pixel(300, 7), (Colour{300 - 256, 7, 1}));
}

TEST_F(PipeWireCameraOfATestServer, showsColoursOfYuy2Closely) {
  const VirtualCamera camera{
      server_.remote(),
      {.name = "camera", .description = "摄像头", .layout = PixelLayout::yuy2},
      [](auto bytes, auto) {
        constexpr std::array<std::uint8_t, 4> red{81, 90, 81, 240};  // Y, Cb, Y, Cr of BT.601
        for (std::size_t index = 0; index < bytes.size(); ++index) bytes[index] = red[index % 4];
      }};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  const auto [blue, green, red] = seen.pixel(640, 360);
  EXPECT_NEAR(blue, 0, 3);
  EXPECT_NEAR(green, 0, 3);
  EXPECT_NEAR(red, 255, 3);
}

TEST_F(PipeWireCameraOfATestServer, decodesJpegs) {
  package::Picture green{.width = hd.width, .height = hd.height};
  green.pixels.resize(static_cast<std::size_t>(3 * hd.width * hd.height));
  for (std::size_t index = 1; index < green.pixels.size(); index += 3) green.pixels[index] = 255;
  const std::string file = media::encodeJpeg(green, 0.9).value();
  const VirtualCamera camera{
      server_.remote(),
      {.name = "camera", .description = "摄像头", .layout = PixelLayout::mjpeg},
      [&](auto bytes, auto) { std::ranges::copy(file, bytes.begin()); }};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  const auto [blue, greenest, red] = seen.pixel(640, 360);
  EXPECT_NEAR(blue, 0, 4);
  EXPECT_NEAR(greenest, 255, 4);
  EXPECT_NEAR(red, 0, 4);
}

TEST_F(PipeWireCameraOfATestServer, takesTheSizeClosestToTheOneWanted) {
  const VirtualCamera camera{
      server_.remote(),
      {.name = "camera", .description = "摄像头", .sizes = {{1920, 1080}, {1024, 576}, {160, 120}}},
      [](auto, auto) {}};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  EXPECT_EQ(seen.frames().back().size, (PixelSize{1024, 576}));
}

TEST_F(PipeWireCameraOfATestServer, stampsFramesByTheTimeTheyWereTaken) {
  const VirtualCamera camera{server_.remote(),
                             {.name = "camera", .description = "摄像头", .sizes = {{320, 240}}},
                             [](auto, auto) {}};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(eventually([&] { return seen.frames().size() > 30; }));
  const auto frames = seen.frames();
  for (const auto& frame : frames) {
    EXPECT_LE(frame.stamp, frame.arrival);
    EXPECT_GT(frame.stamp, frame.arrival - milliseconds{200});
  }
  EXPECT_TRUE(std::ranges::is_sorted(frames, std::ranges::less_equal{}, &SeenFrames::Frame::stamp));
}

TEST_F(PipeWireCameraOfATestServer, stampsFramesByTheirArrivalWhereTheCameraDoesNot) {
  const VirtualCamera camera{
      server_.remote(),
      {.name = "camera", .description = "摄像头", .sizes = {{320, 240}}, .hasStamps = false},
      [](auto, auto) {}};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  for (const auto& frame : seen.frames()) {
    EXPECT_LE(frame.stamp, frame.arrival);
    EXPECT_GT(frame.stamp, frame.arrival - milliseconds{200});
  }
}

TEST_F(PipeWireCameraOfATestServer, turnsPicturesUpright) {
  // The camera says that it turned the picture by a quarter against the clock.
  const VirtualCamera camera{
      server_.remote(),
      {.name = "camera", .description = "摄像头", .sizes = {{320, 240}}, .turned = 1},
      [](auto bytes, auto) { paintPlaces(bytes, {320, 240}); }};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  EXPECT_EQ(seen.frames().back().size, (PixelSize{240, 320}));
  EXPECT_EQ(seen.pixel(239, 0), (Colour{0, 0, 0})) << "its left top is right of the top now";
  EXPECT_EQ(seen.pixel(0, 10), (Colour{10, 239, 0}));
}

TEST_F(PipeWireCameraOfATestServer, leavesOutFramesWhileACallbackRuns) {
  const VirtualCamera camera{server_.remote(),
                             {.name = "camera", .description = "摄像头", .sizes = {{320, 240}}},
                             [](auto, auto) {}};
  std::mutex mutex;
  std::vector<media::HostTime> lateness;
  auto listening = cameras_.listen(
      onlyDevice(), hd,
      [&](const CameraFrame& frame) {
        const media::HostTime now = std::chrono::steady_clock::now().time_since_epoch();
        {
          const std::scoped_lock lock{mutex};
          lateness.push_back(now - frame.stamp);
        }
        std::this_thread::sleep_for(milliseconds{150});
      },
      [](const auto&) {});
  ASSERT_TRUE(listening);
  std::this_thread::sleep_for(milliseconds{1500});
  listening->reset();
  ASSERT_GT(lateness.size(), 4U);
  EXPECT_LT(lateness.size(), 15U);
  EXPECT_LT(*std::ranges::min_element(lateness.begin() + 2, lateness.end()), milliseconds{100});
}

TEST_F(PipeWireCameraOfATestServer, refusesACameraThatCannotBeRead) {
  const VirtualCamera camera{
      server_.remote(), {.name = "camera", .description = "摄像头", .isBroken = true}, {}};
  const auto listening = cameras_.listen(onlyDevice(), hd, [](const auto&) {}, [](const auto&) {});
  ASSERT_FALSE(listening);
  EXPECT_EQ(listening.error(), (CameraRefusal{CameraRefusal::Cause::other, "摄像头停止了工作"}));
}

TEST(CameraFailure, tellsACameraThatIsBusyFromABrokenOne) {
  EXPECT_EQ(cameraFailure("error set output format: -16 (Device or resource busy)"),
            (CameraRefusal{CameraRefusal::Cause::busy, "摄像头正被其他程序使用"}));
  EXPECT_EQ(cameraFailure("no more input formats"),
            (CameraRefusal{CameraRefusal::Cause::other, "摄像头停止了工作"}));
}

TEST_F(PipeWireCameraOfATestServer, endsWithTheDevice) {
  std::optional<VirtualCamera> camera{
      std::in_place, server_.remote(),
      VirtualCamera::Options{.name = "camera", .description = "摄像头"}, [](auto, auto) {}};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  camera.reset();
  ASSERT_TRUE(eventually([&] { return !seen.ends().empty(); }));
  std::this_thread::sleep_for(milliseconds{100});
  EXPECT_EQ(seen.ends().size(), 1U);
  EXPECT_EQ(seen.ends().front(), "摄像头已断开");
}

TEST_F(PipeWireCameraOfATestServer, endsWithTheServer) {
  const VirtualCamera camera{
      server_.remote(), {.name = "camera", .description = "摄像头"}, [](auto, auto) {}};
  const SeenFrames seen{cameras_, onlyDevice(), hd};
  ASSERT_TRUE(shows(seen));
  server_.kill();
  ASSERT_TRUE(eventually([&] { return !seen.ends().empty(); }));
  std::this_thread::sleep_for(milliseconds{100});
  EXPECT_THAT(seen.ends(), ElementsAre("与 PipeWire 服务的连接已断开"));
  EXPECT_THAT(cameras_.devices(), IsEmpty());
}

TEST_F(PipeWireCameraOfATestServer, refusesADeviceThatHasGone) {
  const auto listening =
      cameras_.listen({.id = "gone"}, hd, [](const auto&) {}, [](const auto&) {});
  ASSERT_FALSE(listening);
  EXPECT_EQ(listening.error(), (CameraRefusal{CameraRefusal::Cause::other, "找不到这个摄像头"}));
}

TEST(PipeWireCamera, offersNothingWithoutAServer) {
  PipeWireCamera cameras{"/nowhere/pipewire-0"};
  EXPECT_THAT(cameras.devices(), IsEmpty());
  const auto listening = cameras.listen({.id = "any"}, hd, [](const auto&) {}, [](const auto&) {});
  ASSERT_FALSE(listening);
  EXPECT_EQ(listening.error(),
            (CameraRefusal{CameraRefusal::Cause::other, "连接不上 PipeWire 服务"}));
}

}  // namespace
}  // namespace vesk::capture::pipewire::test
