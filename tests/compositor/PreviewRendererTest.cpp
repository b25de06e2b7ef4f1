#include "compositor/CompositeScenes.h"
#include "compositor/CompositeTarget.h"
#include "compositor/PreviewRenderer.h"
#include "compositor/TestPicture.h"
#include "gpu/GpuTest.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

namespace vesk::compositor {
namespace {

constexpr int width = 160;
constexpr int height = 90;
constexpr glm::vec4 black{0, 0, 0, 1};

class PreviewRendererTest : public gpu::test::GpuTest {
 protected:
  void SetUp() override {
    GpuTest::SetUp();
    renderer_ = take(PreviewRenderer::create(device()));
    renderer_->load(project());
    texture_.emplace(take(gpu::Texture::create(device(), width, height, gpu::PixelFormat::bgra8)));
    canvas_.emplace(take(gpu::Framebuffer::create(*texture_)));
  }
  void TearDown() override {
    canvas_.reset();
    texture_.reset();
    renderer_.reset();
    GpuTest::TearDown();
  }

  static std::shared_ptr<const package::RecordingProject> project() {
    return test::shared(
        test::makeProject(width, height, {test::moveTo(0, 0.5, 0.5), test::moveTo(9, 0.5, 0.5)}));
  }
  static motion::CameraTrack zoomingTrack() {
    motion::CameraTrack track;
    for (int index = 0; index < 120; ++index) {
      motion::CameraPose pose = test::flatPose(1 + index * 0.02);
      pose.motionBlur = 1;
      track.samples.push_back(pose);
    }
    return track;
  }

  PreviewRenderer& renderer() { return *renderer_; }
  test::DoubleImage preview() {
    renderer_->draw(*canvas_);
    return test::canvasImage(*canvas_);
  }
  /// The composite of the current time as an export would draw it.
  test::DoubleImage composite(PreviewRenderer& from) {
    const CompositePlan plan = from.plan(from.currentPose(), from.currentPose(), from.currentTime,
                                         from.contentRect(width, height), width, height);
    {
      gpu::RenderPass pass(*canvas_, from.uniformBuffers(), canvas_->bounds(), black);
      from.encodeComposite(pass, plan);
    }
    return test::canvasImage(*canvas_);
  }
  void showScreen() { take(renderer_->showScreen(test::smoothPicture(width, height))); }

 private:
  std::unique_ptr<PreviewRenderer> renderer_;
  std::optional<gpu::Texture> texture_;
  std::optional<gpu::Framebuffer> canvas_;
};

// The clear grey in eight bits.
constexpr double grey = 20.0 / 255;

TEST_F(PreviewRendererTest, beforeTheFirstPictureTheStageIsGrey) {
  renderer().currentTime = 1;
  take(renderer().showCamera(test::smoothPicture(32, 18)));
  const test::DoubleImage image = preview();
  for (const glm::dvec4& pixel : image.pixels) {
    ASSERT_EQ(pixel, glm::dvec4(grey, grey, grey, 1)) << "no cursor, ripple or camera";
  }
}

TEST_F(PreviewRendererTest, theFrameStandsBeforeTheFirstPicture) {
  renderer().settings.frameStyle.enabled = true;
  renderer().settings.frameStyle.background = package::FrameStyle::Background::solid;
  renderer().settings.frameStyle.colorA = {1, 0, 0, 1};
  renderer().settings.frameStyle.shadow = 0;
  const test::DoubleImage image = preview();
  for (const glm::dvec4& pixel : image.pixels) ASSERT_EQ(pixel, glm::dvec4(1, 0, 0, 1));
}

TEST_F(PreviewRendererTest, thePreviewShowsTheCompositeOfItsTime) {
  showScreen();
  renderer().currentTime = 1;
  renderer().settings.frameStyle.enabled = true;
  EXPECT_EQ(preview().pixels, composite(renderer()).pixels);
}

TEST_F(PreviewRendererTest, loadingAnotherRecordingForgetsThePictures) {
  showScreen();
  take(renderer().showCamera(test::smoothPicture(32, 18)));
  EXPECT_TRUE(renderer().hasScreen());
  EXPECT_EQ(renderer().pictureWidth(), width);
  renderer().load(project());
  EXPECT_FALSE(renderer().hasScreen());
  EXPECT_FALSE(renderer().plan({}, {}, 0, {}, width, height).camera.has_value());
}

TEST_F(PreviewRendererTest, theLastPictureStandsUntilTheNext) {
  showScreen();
  renderer().settings.cursorSettings.visible = false;
  const test::DoubleImage first = preview();
  renderer().currentTime = 5;
  EXPECT_EQ(preview().pixels, first.pixels);
}

TEST_F(PreviewRendererTest, playingComparesWithASixtiethOfASecondBefore) {
  renderer().settings.cameraTrack = zoomingTrack();
  renderer().isPlaying = true;
  renderer().currentTime = 1;
  EXPECT_EQ(renderer().previousPose(renderer().currentPose()), renderer().pose(1 - 1.0 / 60));
  renderer().currentTime = 0.001;
  EXPECT_EQ(renderer().previousPose(renderer().currentPose()), renderer().pose(0));
}

TEST_F(PreviewRendererTest, aPausedPictureIsSharp) {
  renderer().settings.cameraTrack = zoomingTrack();
  renderer().currentTime = 1;
  const auto frame = [&] {
    const motion::CameraPose pose = renderer().currentPose();
    return renderer().plan(pose, renderer().previousPose(pose), 1, {}, width, height).frame.value();
  };
  renderer().isPlaying = true;
  EXPECT_NE(frame().uniforms.prevMVP, frame().uniforms.mvp);
  EXPECT_GT(frame().sampling.taps, 1);
  renderer().isPlaying = false;
  EXPECT_EQ(frame().uniforms.prevMVP, frame().uniforms.mvp);
  EXPECT_EQ(frame().sampling.taps, 1);
}

TEST_F(PreviewRendererTest, withoutATrackOrBlurNothingIsComparedWith) {
  renderer().isPlaying = true;
  renderer().currentTime = 1;
  const auto comparesWithItself = [&] {
    const motion::CameraPose pose = renderer().currentPose();
    return renderer().previousPose(pose) == pose;
  };
  EXPECT_TRUE(comparesWithItself()) << "no track";
  renderer().settings.cameraTrack = zoomingTrack();
  EXPECT_FALSE(comparesWithItself());
  renderer().settings.manualZoom = true;
  EXPECT_TRUE(comparesWithItself()) << "manual zoom";
  renderer().settings.manualZoom = false;
  renderer().settings.motionBlurEnabled = false;
  EXPECT_TRUE(comparesWithItself()) << "blur off";
}

TEST_F(PreviewRendererTest, manualZoomIgnoresTheTrack) {
  renderer().settings.cameraTrack = zoomingTrack();
  renderer().settings.manualZoom = true;
  renderer().settings.zoomLevel = 3;
  EXPECT_EQ(renderer().pose(1).framing, 3);
}

TEST_F(PreviewRendererTest, aCloneLooksTheSameAndSharesNothing) {
  showScreen();
  renderer().currentTime = 1;
  renderer().settings.frameStyle.enabled = true;
  renderer().settings.cursorSettings.style = package::CursorStyle::ring;
  renderer().settings.zoomLevel = 1.5;
  const auto clone = take(renderer().exportClone(device(), project()));
  ASSERT_NE(clone.get(), &renderer());
  EXPECT_EQ(clone->settings, renderer().settings);
  EXPECT_FALSE(clone->hasScreen()) << "the clone has pictures of its own";
  clone->currentTime = 1;
  take(clone->showScreen(test::smoothPicture(width, height)));
  const test::DoubleImage original = composite(renderer());
  EXPECT_EQ(composite(*clone).pixels, original.pixels);

  clone->settings.frameStyle.enabled = false;
  clone->settings.cursorSettings.style = package::CursorStyle::dot;
  take(clone->showScreen(test::screenPicture(width, height)));
  const test::DoubleImage changed = composite(*clone);
  EXPECT_NE(changed.pixels, original.pixels);
  EXPECT_EQ(composite(renderer()).pixels, original.pixels) << "the source is untouched";

  renderer().settings.zoomLevel = 4;
  renderer().settings.cursorSettings.style = package::CursorStyle::crosshair;
  composite(renderer());
  EXPECT_EQ(composite(*clone).pixels, changed.pixels) << "and so is the clone";
}

TEST_F(PreviewRendererTest, anotherStyleOfCursorShowsAtTheNextFrame) {
  showScreen();
  renderer().settings.cursorSettings.scale = 3;
  const test::DoubleImage arrow = preview();
  renderer().settings.cursorSettings.style = package::CursorStyle::ring;
  const test::DoubleImage ring = preview();
  EXPECT_NE(arrow.pixels, ring.pixels);
  renderer().settings.cursorSettings.style = package::CursorStyle::arrow;
  EXPECT_EQ(preview().pixels, arrow.pixels);
}

// OpenGL hands out names of textures in order, so a texture made in between leaves a gap.
TEST_F(PreviewRendererTest, onlyTheStyleRebuildsTheCursorsBitmap) {
  showScreen();
  preview();
  const auto probe = [&] {
    return take(gpu::Texture::create(device(), 1, 1, gpu::PixelFormat::r8));
  };
  const gpu::Texture first = probe();
  renderer().settings.cursorSettings.scale = 2.5;
  renderer().settings.cursorSettings.smoothing = 0;
  preview();
  const gpu::Texture second = probe();
  EXPECT_EQ(second.handle(), first.handle() + 1);
  renderer().settings.cursorSettings.style = package::CursorStyle::dot;
  preview();
  const gpu::Texture third = probe();
  EXPECT_NE(third.handle(), second.handle() + 1);
}

TEST_F(PreviewRendererTest, tellsWhatChangedInThePictures) {
  const media::VideoFrame picture = test::smoothPicture(width, height);
  EXPECT_EQ(take(renderer().showScreen(picture)), (gpu::PixelRect{0, 0, width, height}));
  EXPECT_TRUE(take(renderer().showScreen(picture)).isEmpty());
  EXPECT_TRUE(take(renderer().showCamera(picture)));
  EXPECT_FALSE(take(renderer().showCamera(picture)));
}

/// A take whose camera started 2 s after the screen and saw light 0.5 s later.
class CameraOfAClone : public PreviewRendererTest {
 protected:
  std::shared_ptr<const package::RecordingProject> cameraTake(bool withCamera = true) {
    if (withCamera) {
      media::makeMovie(folder_ / "camera.mov",
                       {.ticksPerSecond = 10, .ticks = media::evenTicks(20, 1)});
    }
    package::RecordingMeta meta;
    meta.captureWidth = width;
    meta.captureHeight = height;
    meta.firstFramePTS = 100;
    meta.cameraFirstFramePTS = 102;
    meta.cameraFirstLitPTS = 102.5;
    return test::shared(package::RecordingProject::make(folder_.path(), meta, {}));
  }
  bool showsWindow(double time) {
    return renderer().plan({}, {}, time, {}, width, height).camera.has_value();
  }

 private:
  media::TemporaryFolder folder_;
};

TEST_F(CameraOfAClone, showsFromTheFirstLightOn) {
  renderer().loadForExport(cameraTake());
  EXPECT_FALSE(renderer().advanceCamera(1));
  EXPECT_FALSE(showsWindow(1)) << "before the camera started";
  EXPECT_FALSE(renderer().advanceCamera(2.4));
  EXPECT_FALSE(showsWindow(2.4)) << "while it was dark";
  EXPECT_TRUE(renderer().advanceCamera(2.5));
  EXPECT_TRUE(showsWindow(2.5));
}

TEST_F(CameraOfAClone, changesOnlyWhenTheCameraHasAnotherPicture) {
  renderer().loadForExport(cameraTake());
  EXPECT_TRUE(renderer().advanceCamera(2.51));
  EXPECT_FALSE(renderer().advanceCamera(2.55)) << "the same picture at ten a second";
  EXPECT_TRUE(renderer().advanceCamera(2.62));
  EXPECT_TRUE(renderer().advanceCamera(60)) << "the last one";
  EXPECT_FALSE(renderer().advanceCamera(61));
  EXPECT_TRUE(showsWindow(61)) << "it stands after the end";
}

TEST_F(CameraOfAClone, aWindowThatIsOffIsNotRead) {
  renderer().loadForExport(cameraTake());
  renderer().settings.pip.enabled = false;
  EXPECT_FALSE(renderer().advanceCamera(3));
  EXPECT_FALSE(showsWindow(3));
}

TEST_F(CameraOfAClone, withoutACameraThereIsNoWindow) {
  renderer().loadForExport(cameraTake(false));
  EXPECT_FALSE(renderer().advanceCamera(3));
  EXPECT_FALSE(showsWindow(3));
}

TEST_F(CameraOfAClone, thePreviewShowsTheWindowFromTheFirstMoment) {
  renderer().load(cameraTake());
  EXPECT_FALSE(renderer().advanceCamera(3)) << "its pictures come from the player";
  take(renderer().showCamera(test::smoothPicture(64, 48)));
  EXPECT_TRUE(showsWindow(0));
  EXPECT_EQ(renderer().cameraTime(1), 0);
  EXPECT_EQ(renderer().cameraTime(5), 3);
}

TEST_F(CameraOfAClone, anotherRecordingBringsItsOwnCamera) {
  renderer().loadForExport(cameraTake());
  EXPECT_TRUE(renderer().advanceCamera(3));
  renderer().loadForExport(project());
  EXPECT_FALSE(showsWindow(3));
  EXPECT_FALSE(renderer().advanceCamera(3));
}

TEST_F(PreviewRendererTest, thePreviewOfARecordingWithoutAreaIsNoFault) {
  renderer().load(test::shared(test::makeProject(0, 0)));
  showScreen();
  EXPECT_EQ(preview().width, width);
}

}  // namespace
}  // namespace vesk::compositor
