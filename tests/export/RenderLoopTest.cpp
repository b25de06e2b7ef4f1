#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "export/ExportStage.h"
#include "export/RenderLoop.h"

namespace vesk::exporting {
namespace {

using media::MediaError;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Outcome = std::expected<ExportStatistics, ExportError>;

class RenderLoopTest : public ExportStage {
 protected:
  static constexpr RenderLoop::Grid smallGrid(std::int64_t frames, std::int64_t fps = 10) {
    return {.width = 128, .height = 72, .fps = fps, .frames = frames};
  }

  Outcome run(const package::RecordingProject& project, const RenderLoop::Grid& grid,
              SourceFrames::Next pictures) {
    const auto renderer = makeRenderer(project, settingsFor(project));
    RenderLoop loop(device(), *renderer, compositor::CompositeTarget::Redraw::changed,
                    compositor::PictureDownload::preferredConversion(device()));
    SourceFrames source(std::move(pictures));
    return loop.run(
        grid, source, sink_, [this](double share) { reports_.push_back(share); }, cancelled_);
  }

  Outcome runPlain(const RenderLoop::Grid& grid, SourceFrames::Next pictures) {
    return run(plainProject("plain.recording", 10), grid, std::move(pictures));
  }

  std::vector<std::shared_ptr<const media::I420Picture>> pictures_;
  RenderLoop::Sink sink_ = [this](auto picture) {
    pictures_.push_back(std::move(picture));
    return true;
  };
  std::vector<double> reports_;
  std::atomic<bool> cancelled_ = false;
};

int shade(const std::shared_ptr<const media::I420Picture>& picture) {
  return *picture->planes()[0].data;
}

TEST_F(RenderLoopTest, eachFrameShowsThePictureThatStandsThen) {
  const auto outcome =
      runPlain(smallGrid(6), inTurn({flatFrame(50, 100.0), flatFrame(100, 100.2),
                                     flatFrame(150, 100.25), flatFrame(200, 100.4)}));
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->frames, 6);
  ASSERT_THAT(pictures_, SizeIs(6));
  constexpr int tolerance = 1;
  const std::vector<int> expected{50, 50, 100, 150, 200, 200};
  for (std::size_t index = 0; index < expected.size(); ++index) {
    EXPECT_NEAR(shade(pictures_[index]), expected[index], tolerance) << index;
  }
}

TEST_F(RenderLoopTest, aFrameEqualToTheOneBeforeIsTheSamePicture) {
  const auto outcome = runPlain(smallGrid(5), inTurn({flatFrame(50, 0), flatFrame(90, 0.2)}));
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->frames, 5);
  EXPECT_EQ(outcome->sentAgain, 3);
  EXPECT_EQ(pictures_[0], pictures_[1]);
  EXPECT_NE(pictures_[1], pictures_[2]);
  EXPECT_EQ(pictures_[2], pictures_[4]);
}

TEST_F(RenderLoopTest, overAStillScreenCameraAndCursorMove) {
  const package::RecordingProject project = loadTake(VESK_SAMPLE_TAKE);
  auto only = picturesFrom(project.screenURL())();
  ASSERT_TRUE(only && only->has_value());
  const auto outcome =
      run(project, {.width = 320, .height = 180, .fps = 10, .frames = 60}, inTurn({**only}));
  ASSERT_TRUE(outcome);
  ASSERT_THAT(pictures_, SizeIs(60));
  std::set<std::size_t> different;
  for (const auto& picture : pictures_) different.insert(fingerprint(*picture));
  EXPECT_GT(different.size(), 30U);
}

TEST_F(RenderLoopTest, withoutAnyPictureNoFrameComes) {
  const auto outcome = runPlain(smallGrid(20), inTurn({}));
  ASSERT_TRUE(outcome);
  EXPECT_EQ(*outcome, ExportStatistics{});
  EXPECT_THAT(pictures_, IsEmpty());
}

TEST_F(RenderLoopTest, progressIsReportedEveryTenFramesAndStaysBelowOne) {
  ASSERT_TRUE(runPlain(smallGrid(35), inTurn({flatFrame(50, 0)})));
  EXPECT_THAT(reports_, ElementsAre(9.0 / 35, 19.0 / 35, 29.0 / 35));
}

TEST_F(RenderLoopTest, aCancellationBeforeTheStartGivesNoFrame) {
  cancelled_ = true;
  const auto outcome = runPlain(smallGrid(35), inTurn({flatFrame(50, 0)}));
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error(), ExportError::cancelled());
  EXPECT_THAT(pictures_, IsEmpty());
}

TEST_F(RenderLoopTest, aCancellationTakesEffectAtTheNextFrame) {
  sink_ = [this](auto picture) {
    pictures_.push_back(std::move(picture));
    cancelled_ = pictures_.size() == 7;
    return true;
  };
  const auto outcome = runPlain(smallGrid(35), inTurn({flatFrame(50, 0)}));
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error(), ExportError::cancelled());
  EXPECT_THAT(pictures_, SizeIs(7));
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(RenderLoopTest, aCancellationDuringTheLastFrameCounts) {
  sink_ = [this](const auto& /*picture*/) {
    cancelled_ = true;
    return true;
  };
  const auto outcome = runPlain(smallGrid(1), inTurn({flatFrame(50, 0)}));
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error(), ExportError::cancelled());
}

TEST_F(RenderLoopTest, aTakerWhoRefusesEndsTheLoop) {
  sink_ = [this](auto picture) {
    pictures_.push_back(std::move(picture));
    return pictures_.size() < 3;
  };
  ASSERT_TRUE(runPlain(smallGrid(35), inTurn({flatFrame(50, 0)})));
  EXPECT_THAT(pictures_, SizeIs(3));
}

TEST_F(RenderLoopTest, aFailureToReadEndsTheLoop) {
  const auto outcome = runPlain(
      smallGrid(35),
      [pictures = inTurn({flatFrame(50, 0), flatFrame(60, 0.1)}),
       count = 0]() mutable -> std::expected<std::optional<media::VideoFrame>, MediaError> {
        if (count++ < 2) return pictures();
        return std::unexpected(MediaError{MediaError::Kind::decodeFailed, "画面已损坏"});
      });
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error(), ExportError::readerFailed("画面已损坏"));
}

TEST_F(RenderLoopTest, aPictureThatTheGraphicsCannotHoldIsAFailure) {
  const int tooWide = device().capabilities().maxTextureSize + 2;
  const auto outcome = runPlain(smallGrid(3), inTurn({flatFrame(50, 0, tooWide, 2)}));
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error().kind, ExportError::Kind::writerFailed);
  EXPECT_THAT(outcome.error().message, testing::StartsWith("创建 Metal 纹理失败"));
}

TEST_F(RenderLoopTest, picturesGivenOutStayAsTheyAre) {
  std::vector<std::size_t> atTheTime;
  sink_ = [&](auto picture) {
    atTheTime.push_back(fingerprint(*picture));
    pictures_.push_back(std::move(picture));
    return true;
  };
  const package::RecordingProject project = loadTake(VESK_SAMPLE_TAKE);
  ASSERT_TRUE(run(project, {.width = 192, .height = 108, .fps = 30, .frames = 60},
                  picturesFrom(project.screenURL())));
  for (std::size_t index = 0; index < pictures_.size(); ++index) {
    ASSERT_EQ(fingerprint(*pictures_[index]), atTheTime[index]) << index;
  }
}

}  // namespace
}  // namespace vesk::exporting
