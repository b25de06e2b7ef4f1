#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "capture/CameraRecorder.h"
#include "capture/fake/FakeCameraSource.h"
#include "capture/fake/FakeTakeMovies.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;
using Kind = CameraRecorder::CameraError::Kind;

constexpr std::uint32_t black = 0x000000;
constexpr std::uint32_t grey = 0x808080;

class CameraRecorderTest : public testing::Test {
 protected:
  auto start(const std::optional<CameraDevice>& device = {}) {
    return recorder_.start(device, folder_.path() / "camera.mov");
  }

  package::TemporaryDirectory folder_;
  fake::FakeCameraSource camera_;
  fake::FakeTakeMovies movies_;
  CameraRecorder recorder_{camera_, movies_.opener()};
};

TEST_F(CameraRecorderTest, writesTheFirstCameraInItsFixedSize) {
  camera_.setDevices(
      {{.id = "a", .name = "A", .type = "Fake"}, {.id = "b", .name = "B", .type = "Fake"}});
  ASSERT_TRUE(start());
  EXPECT_EQ(camera_.lastRequest()->device.id, "a");
  EXPECT_EQ(camera_.lastRequest()->size, (PixelSize{.width = 1280, .height = 720}));
  camera_.show(1500ms, grey);
  camera_.show(1533ms, grey);
  recorder_.stop();
  const auto movie = movies_.movie("camera.mov");
  ASSERT_TRUE(movie);
  EXPECT_EQ(movie->settings.pictures->width, 1280);
  EXPECT_EQ(movie->settings.pictures->height, 720);
  EXPECT_EQ(movie->settings.pictures->bitRate, 1'658'880);
  EXPECT_EQ(movie->settings.encoder.codec, media::PictureCodec::h264);
  EXPECT_THAT(movie->pictures, ElementsAre(1500ms, 1533ms));
  EXPECT_TRUE(movie->isFinished);
  EXPECT_EQ(recorder_.firstFramePTS(), 1.5);
  EXPECT_EQ(recorder_.firstLitFramePTS(), 1.5);
}

TEST_F(CameraRecorderTest, theCameraThatWasChosenIsTheOneThatIsUsed) {
  const CameraDevice desk{.id = "desk", .name = "桌面摄像头", .type = "Fake"};
  camera_.setDevices({{.id = "front", .name = "前置摄像头", .type = "Fake"}, desk});
  ASSERT_TRUE(start(desk));
  EXPECT_EQ(camera_.lastRequest()->device.id, "desk");
}

TEST_F(CameraRecorderTest, withoutACameraItDoesNotStart) {
  camera_.setDevices({});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().kind, Kind::noDevice);
  EXPECT_EQ(started.error().message, "找不到可用的摄像头");
}

TEST_F(CameraRecorderTest, aBusyCameraIsNamedAsSuch) {
  camera_.refuse(CameraRefusal{.cause = CameraRefusal::Cause::busy, .message = "EBUSY"});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().kind, Kind::cannotAddInput);
  EXPECT_EQ(started.error().message, "摄像头无法加入捕获会话（可能被其它 App 占用）");
}

TEST_F(CameraRecorderTest, anotherRefusalIsPassedOnAsItStands) {
  camera_.refuse(CameraRefusal{.cause = CameraRefusal::Cause::other, .message = "没有权限"});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().message, "没有权限");
}

TEST_F(CameraRecorderTest, aBlackFirstSecondSetsTheLitFrameApart) {
  ASSERT_TRUE(start());
  camera_.show(10s, black);
  camera_.show(10500ms, black);
  camera_.show(11s, grey);
  camera_.show(12s, grey);
  EXPECT_EQ(recorder_.firstFramePTS(), 10.0);
  EXPECT_EQ(recorder_.firstLitFramePTS(), 11.0);
}

TEST_F(CameraRecorderTest, anAllBlackTakeHasNoLitFrame) {
  ASSERT_TRUE(start());
  camera_.show(10s, black);
  camera_.show(11s, black);
  recorder_.stop();
  EXPECT_EQ(recorder_.firstLitFramePTS(), std::nullopt);
}

TEST_F(CameraRecorderTest, aCameraThatNeverDeliversLeavesNoFileAndNoFailure) {
  ASSERT_TRUE(start());
  recorder_.stop();
  EXPECT_THAT(movies_.movies(), IsEmpty());
  EXPECT_EQ(recorder_.firstFramePTS(), std::nullopt);
  EXPECT_EQ(recorder_.failure(), std::nullopt);
}

TEST_F(CameraRecorderTest, aFileThatCannotBeMadeIsOneFailure) {
  ASSERT_TRUE(start());
  movies_.failToOpen(
      media::MediaError{.kind = media::MediaError::Kind::diskFull, .message = "磁盘已满"});
  camera_.show(1s, grey);
  camera_.show(2s, grey);
  EXPECT_EQ(recorder_.failure(), "无法创建摄像头写入器：磁盘已满");
  EXPECT_EQ(recorder_.firstFramePTS(), std::nullopt);
}

TEST_F(CameraRecorderTest, aWriterThatFailsIsAFailureAndTheRestIsLost) {
  ASSERT_TRUE(start());
  camera_.show(1s, grey);
  movies_.breakMovie("camera.mov", "");
  camera_.show(2s, grey);
  EXPECT_EQ(recorder_.failure(), "摄像头写入器异常终止");
  EXPECT_THAT(movies_.movie("camera.mov")->pictures, ElementsAre(1s));
}

TEST_F(CameraRecorderTest, aCameraThatIsPulledOutIsAFailure) {
  ASSERT_TRUE(start());
  camera_.show(1s, grey);
  camera_.end(BackendError{"摄像头已断开"});
  recorder_.stop();
  EXPECT_EQ(recorder_.failure(), "摄像头已断开");
  EXPECT_TRUE(movies_.movie("camera.mov")->isFinished);
}

}  // namespace
}  // namespace vesk::capture
