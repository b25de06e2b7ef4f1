#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "export/ExportRenderer.h"
#include "export/ExportStage.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/VideoReader.h"

namespace vesk::exporting {
namespace {

constexpr int cameraRate = 30;
constexpr int cameraPictures = 60;
constexpr double duration = 3;

/// A take over a black screen whose camera shows the number of its picture as a shade.
class CameraMovieTest : public ExportStage {
 protected:
  CameraMovieTest() { std::filesystem::create_directory(package_); }

  package::RecordingProject take(double offset, double dark) {
    media::makeMovie(package_ / "screen.mov", {.ticks = {0}});
    media::makeMovie(
        package_ / "camera.mov",
        {.ticksPerSecond = cameraRate, .ticks = media::evenTicks(cameraPictures, 1), .bFrames = 2});
    package::RecordingProject project = plainProject(package_, duration);
    project.meta.firstFramePTS = 500.25;
    project.meta.cameraFirstFramePTS = 500.25 + offset;
    project.meta.cameraFirstLitPTS = 500.25 + offset + dark;
    return project;
  }

  /// Exports with a large window in the middle and gives the movie.
  media::VideoReader movieOf(const package::RecordingProject& project, std::int64_t fps) {
    compositor::CompositeSettings settings = settingsFor(project);
    settings.pip.shape = package::PiPSettings::Shape::rounded;
    settings.pip.size = 0.4;
    settings.pip.center = {0.5F, 0.5F};
    ExportRenderer exporter(device(), makeRenderer(project, settings));
    const auto outcome =
        exporter.exportMovie(project, {.fps = fps}, folder_ / "movie.mp4", [](double) {});
    if (!outcome) throw std::runtime_error(outcome.error().description());
    auto reader = media::VideoReader::open(folder_ / "movie.mp4");
    if (!reader) throw std::runtime_error(reader.error().message);
    return *std::move(reader);
  }

  static int lumaInTheMiddle(const media::VideoFrame& frame) {
    const media::VideoPlane& luma = frame.planes[0];
    return static_cast<int>(luma.data[frame.height / 2 * luma.stride + frame.width / 2]);
  }

  /// Every frame of the movie shows the first camera picture at or after its time, and none before
  /// the light.
  void expectInTime(double offset, double dark, std::int64_t fps) {
    const package::RecordingProject project = take(offset, dark);
    media::VideoReader movie = movieOf(project, fps);
    // What the screen shows where no window is.
    const int screenShade = media::shadeOf(0);
    int shown = 0;
    for (int index = 0; index < duration * static_cast<double>(fps); ++index) {
      const auto frame = movie.next();
      ASSERT_TRUE(frame && frame->has_value()) << index;
      const double time = index / static_cast<double>(fps);
      const int luma = lumaInTheMiddle(**frame);
      if (time < offset + dark) {
        EXPECT_NEAR(luma, screenShade, 3) << "a window at " << time;
        continue;
      }
      ++shown;
      const double place = std::max(time - offset, 0.0) * cameraRate;
      const int wanted = std::min(static_cast<int>(std::ceil(place - 1e-6)), cameraPictures - 1);
      EXPECT_NEAR(luma, media::shadeOf(wanted), 3) << "picture " << wanted << " at " << time;
    }
    EXPECT_GT(shown, 0);
  }

  media::TemporaryFolder folder_;
  std::filesystem::path package_ = folder_ / "camera.recording";
};

TEST_F(CameraMovieTest, aLateCameraIsInTime) {
  expectInTime(0.412, 0.5, 60);
}

TEST_F(CameraMovieTest, aCameraThatBeganFirstIsInTime) {
  expectInTime(-0.25, 0, 60);
}

TEST_F(CameraMovieTest, aMovieOfFewerFramesThanTheCameraIsInTime) {
  expectInTime(0.1, 0.2, 24);
}

TEST_F(CameraMovieTest, aDamagedCameraDoesNotHarmTheMovie) {
  const package::RecordingProject project = take(0, 0);
  const std::string bytes = media::bytesOf(package_ / "camera.mov");
  for (const std::size_t length : {std::size_t{0}, std::size_t{20}, bytes.size() / 2}) {
    media::writeBytes(package_ / "camera.mov", std::string_view(bytes).substr(0, length));
    media::VideoReader movie = movieOf(project, 30);
    const auto frame = movie.next();
    ASSERT_TRUE(frame && frame->has_value()) << length;
    EXPECT_NEAR(lumaInTheMiddle(**frame), media::shadeOf(0), 3) << length;
  }
}

}  // namespace
}  // namespace vesk::exporting
