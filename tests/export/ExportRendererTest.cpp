#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <memory>
#include <thread>
#include <vector>

#include "export/ExportRenderer.h"
#include "export/ExportStage.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/VideoReader.h"

namespace vesk::exporting {
namespace {

using namespace std::chrono_literals;
using media::MovieRecipe;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;
using Clock = std::chrono::steady_clock;

std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

class ExportRendererTest : public ExportStage {
 protected:
  ExportRendererTest() { std::filesystem::create_directory(package_); }

  package::RecordingProject take(double duration, const MovieRecipe& recipe = {.ticks = {0}}) {
    makeMovie(package_ / "screen.mov", recipe);
    return plainProject(package_, duration);
  }

  std::unique_ptr<ExportRenderer> exporterFor(const package::RecordingProject& project) {
    return std::make_unique<ExportRenderer>(device(), makeRenderer(project, settingsFor(project)));
  }

  std::expected<ExportStatistics, ExportError> exportTake(const package::RecordingProject& project,
                                                          const ExportSettings& settings = {}) {
    return exporterFor(project)->exportMovie(project, settings, output_,
                                             [this](double share) { reports_.push_back(share); });
  }

  /// Waits for threads that have been joined to leave the process's list as well.
  static void expectThreads(std::ptrdiff_t count) {
    const auto deadline = Clock::now() + 5s;
    while (threadCount() > count && Clock::now() < deadline) std::this_thread::sleep_for(1ms);
    EXPECT_LE(threadCount(), count);
  }

  void expectCancelled(const std::expected<ExportStatistics, ExportError>& outcome) const {
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error(), ExportError::cancelled());
    EXPECT_FALSE(std::filesystem::exists(output_));
  }

  media::TemporaryFolder folder_;
  std::filesystem::path package_ = folder_ / "plain.recording";
  std::filesystem::path output_ = folder_ / "movie.mp4";
  std::vector<double> reports_;
};

TEST_F(ExportRendererTest, theFrameCountIsTheRoundedDuration) {
  const auto statistics = exportTake(take(10.02), {.fps = 30});
  ASSERT_TRUE(statistics);
  EXPECT_EQ(statistics->frames, 301);
  EXPECT_EQ(media::inspect(output_).packets.size(), 301U);
}

TEST_F(ExportRendererTest, framesLieExactlyOnTheGrid) {
  ASSERT_TRUE(exportTake(take(2.0, {.ticks = {0, 17, 40, 900, 901, 1500}})));
  const media::StoredMovie movie = media::inspect(output_);
  ASSERT_EQ(movie.packets.size(), 120U);
  for (std::size_t index = 0; index < movie.packets.size(); ++index) {
    EXPECT_NEAR(movie.packets[index].pts, static_cast<double>(index) / 60, 1e-12);
  }
  EXPECT_EQ(movie.codec, "h264");
}

TEST_F(ExportRendererTest, aRecordingWithoutDurationGivesOneFrame) {
  ASSERT_TRUE(exportTake(take(0)));
  EXPECT_EQ(media::inspect(output_).packets.size(), 1U);
}

TEST_F(ExportRendererTest, withoutADurationTheLastEventEndsTheMovie) {
  package::RecordingProject project = take(1);
  project.meta.duration.reset();
  ASSERT_TRUE(exportTake(project));
  EXPECT_EQ(media::inspect(output_).packets.size(), 1U);
  project = package::RecordingProject::make(project.url, project.meta, {{.t = 0.5}});
  ASSERT_TRUE(exportTake(project));
  EXPECT_EQ(media::inspect(output_).packets.size(), 30U);
}

TEST_F(ExportRendererTest, aSourceThatStartsLateBeginsAtTheMoviesStart) {
  ASSERT_TRUE(exportTake(take(1.0, {.ticks = media::evenTicks(4, 250, 100'000)}), {.fps = 4}));
  auto reader = media::VideoReader::open(output_);
  ASSERT_TRUE(reader);
  for (int index = 0; index < 4; ++index) {
    const auto picture = reader->next();
    ASSERT_TRUE(picture && picture->has_value());
    EXPECT_NEAR((*picture)->pts, index / 4.0, 1e-12);
    EXPECT_NEAR(media::meanLuma(**picture), media::shadeOf(index), 3);
  }
}

TEST_F(ExportRendererTest, aSourceWithoutPicturesGivesAMovieWithoutPictures) {
  const auto statistics =
      exportTake(take(1, {.ticks = {}, .movFlags = "+frag_keyframe+empty_moov"}));
  ASSERT_TRUE(statistics) << statistics.error().description();
  EXPECT_EQ(statistics->frames, 0);
  EXPECT_TRUE(std::filesystem::exists(output_));
}

TEST_F(ExportRendererTest, aMovHoldsHevc) {
  output_ = folder_ / "movie.mov";
  ASSERT_TRUE(exportTake(take(0.5), {.format = ExportSettings::Format::mov}));
  const media::StoredMovie movie = media::inspect(output_);
  EXPECT_EQ(movie.codec, "hevc");
  EXPECT_EQ(movie.tag, "hvc1");
  EXPECT_EQ(movie.packets.size(), 30U);
}

TEST_F(ExportRendererTest, progressRisesToOneAndNotBeyond) {
  ASSERT_TRUE(exportTake(take(1.5)));
  ASSERT_EQ(reports_.size(), 10U) << "one for each ten of the 90 frames and one at the end";
  EXPECT_TRUE(std::ranges::is_sorted(reports_));
  EXPECT_THAT(reports_, Each(Le(1.0)));
  EXPECT_EQ(reports_.back(), 1.0);
}

TEST_F(ExportRendererTest, anOlderMovieOfThatNameIsReplaced) {
  media::writeBytes(output_, std::string(1'000'000, 'x'));
  ASSERT_TRUE(exportTake(take(0.2)));
  EXPECT_EQ(media::inspect(output_).packets.size(), 12U);
}

TEST_F(ExportRendererTest, twoExportsAreTheSameToTheByte) {
  package::RecordingProject project = loadTake(VESK_SAMPLE_TAKE);
  project.meta.duration = 1.0;
  const ExportSettings settings{.resolution = ExportSettings::Resolution::p720};
  ASSERT_TRUE(exportTake(project, settings));
  const std::string first = media::bytesOf(output_);
  output_ = folder_ / "again.mp4";
  ASSERT_TRUE(exportTake(project, settings));
  EXPECT_EQ(media::inspect(output_).packets.size(), 60U);
  EXPECT_TRUE(media::bytesOf(output_) == first);
}

TEST_F(ExportRendererTest, cancelledBeforeTheStartItLeavesNothing) {
  const auto project = take(5);
  const auto exporter = exporterFor(project);
  exporter->cancel();
  expectCancelled(exporter->exportMovie(project, {}, output_,
                                        [this](double share) { reports_.push_back(share); }));
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(ExportRendererTest, cancelledOnTheWayItReportsNothingMore) {
  const auto project = take(3600);
  ASSERT_TRUE(exportTake(take(0.1)));
  std::filesystem::remove(output_);
  const std::ptrdiff_t threads = threadCount();
  reports_.clear();
  const auto exporter = exporterFor(project);
  expectCancelled(exporter->exportMovie(project, {}, output_, [&](double share) {
    reports_.push_back(share);
    if (reports_.size() == 3) exporter->cancel();
  }));
  EXPECT_THAT(reports_, ElementsAre(9.0 / 216'000, 19.0 / 216'000, 29.0 / 216'000));
  expectThreads(threads);
}

// Equal frames are made faster than they can be encoded, so the loop waits for the encoder.
TEST_F(ExportRendererTest, cancelledFromAnotherThreadWhileItWaitsItEndsAtOnce) {
  const auto project = take(3600, {.width = 1280, .height = 720, .ticks = {0}});
  ASSERT_TRUE(exportTake(take(0.1)));
  std::filesystem::remove(output_);
  const std::ptrdiff_t threads = threadCount();
  take(3600, {.width = 1280, .height = 720, .ticks = {0}});
  const auto exporter = exporterFor(project);
  std::atomic<bool> started = false;
  Clock::time_point cancelledAt;
  std::jthread other([&] {
    while (!started) std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(100ms);
    cancelledAt = Clock::now();
    exporter->cancel();
  });
  expectCancelled(exporter->exportMovie(project, {}, output_, [&](double) { started = true; }));
  const Clock::time_point ended = Clock::now();
  other.join();
  EXPECT_LT(ended - cancelledAt, 3s);
  expectThreads(threads);
}

}  // namespace
}  // namespace vesk::exporting
