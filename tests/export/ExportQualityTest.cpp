#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <utility>

#include "export/ExportRenderer.h"
#include "export/ExportStage.h"
#include "export/RenderLoop.h"
#include "media/TemporaryFolder.h"
#include "media/VideoReader.h"

// The encoder must not lose what was drawn: the movie is held against the pictures before encoding.
namespace vesk::exporting {
namespace {

struct Quality {
  std::string name;
  const char* take;
  double seconds;
};

void PrintTo(const Quality& quality, std::ostream* out) {
  *out << quality.name;
}

/// Sums up how far a movie's luma lies from the pictures it was made of.
class LumaDeviation {
 public:
  explicit LumaDeviation(media::VideoReader movie) : movie_(std::move(movie)) {}

  /// Takes the next picture; false when the movie has none for it.
  bool add(const media::I420Picture& picture) {
    const auto next = movie_.next();
    if (!next || !next->has_value()) return false;
    const media::VideoPlane& stored = (*next)->planes[0];
    const media::I420Picture::Plane& drawn = picture.planes()[0];
    for (int row = 0; row < drawn.height; ++row) {
      const std::uint8_t* a = drawn.data + row * drawn.stride;
      const std::byte* b = stored.data + row * stored.stride;
      int squares = 0;  // of a row of 8-bit differences: fits
      for (int column = 0; column < drawn.width; ++column) {
        const int difference = a[column] - std::to_integer<int>(b[column]);
        squares += difference * difference;
      }
      squares_ += squares;
    }
    samples_ += static_cast<double>(drawn.width) * drawn.height;
    return true;
  }

  /// Peak signal to noise ratio in dB.
  double psnr() const { return 10 * std::log10(255.0 * 255.0 * samples_ / squares_); }

 private:
  media::VideoReader movie_;
  double squares_ = 0;
  double samples_ = 0;
};

class ExportQuality : public ExportStage, public testing::WithParamInterface<Quality> {
 protected:
  media::TemporaryFolder folder_;
  std::filesystem::path output_ = folder_ / "movie.mp4";
};

TEST_P(ExportQuality, theMovieKeepsWhatWasDrawn) {
  package::RecordingProject project = loadTake(GetParam().take);
  const compositor::CompositeSettings settings = settingsFor(project);
  project.meta.duration = GetParam().seconds;
  ExportRenderer exporter(device(), makeRenderer(project, settings));
  const auto statistics = exporter.exportMovie(project, {}, output_, [](double) {});
  ASSERT_TRUE(statistics) << statistics.error().description();

  auto movie = media::VideoReader::open(output_);
  ASSERT_TRUE(movie) << movie.error().message;
  const RenderLoop::Grid grid{.width = movie->info().width,
                              .height = movie->info().height,
                              .fps = 60,
                              .frames = statistics->frames};
  EXPECT_EQ(grid.width, project.meta.captureWidth);
  EXPECT_EQ(grid.height, project.meta.captureHeight);
  LumaDeviation deviation(*std::move(movie));
  const auto renderer = makeRenderer(project, settings);
  RenderLoop loop(device(), *renderer, ExportRenderer::Redraw::changed,
                  compositor::PictureDownload::preferredConversion(device()));
  SourceFrames source(picturesFrom(project.screenURL()));
  const std::atomic<bool> cancelled = false;
  const auto drawn = loop.run(
      grid, source, [&](const auto& picture) { return deviation.add(*picture); }, [](double) {},
      cancelled);
  ASSERT_TRUE(drawn) << drawn.error().description();
  EXPECT_EQ(drawn->frames, statistics->frames) << "the movie has too few pictures";
  RecordProperty("psnr", std::to_string(deviation.psnr()));
  EXPECT_GE(deviation.psnr(), 40.0);
}

INSTANTIATE_TEST_SUITE_P(Takes, ExportQuality,
                         testing::Values(Quality{"tour", VESK_SAMPLE_TAKE, 10},
                                         Quality{"marks", VESK_MARKS_TAKE, 2}),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace vesk::exporting
