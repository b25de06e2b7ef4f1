#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <vector>

#include "export/ExportController.h"
#include "export/ExportStage.h"
#include "export/OffscreenExport.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/VideoReader.h"

namespace vesk::exporting {
namespace {

using namespace std::chrono_literals;
using state::Cancelled;
using state::Exporting;
using state::Failed;
using state::Finished;
using state::Idle;
using testing::ElementsAre;
using testing::IsEmpty;

/// The main thread's queue, run by the test.
class MainQueue {
 public:
  void post(std::function<void()> work) {
    const std::scoped_lock lock(mutex_);
    work_.push_back(std::move(work));
    arrived_.notify_one();
  }

  /// Runs one piece of work, waiting for it if need be. False when none came.
  bool runOne(std::chrono::milliseconds patience = 20s) {
    std::function<void()> work;
    {
      std::unique_lock lock(mutex_);
      if (!arrived_.wait_for(lock, patience, [&] { return !work_.empty(); })) return false;
      work = std::move(work_.front());
      work_.pop_front();
    }
    work();
    return true;
  }

  std::size_t waiting() {
    const std::scoped_lock lock(mutex_);
    return work_.size();
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::function<void()>> work_;
};

/// An export that does as the test says, step by step.
class Script {
 public:
  using Outcome = std::expected<void, ExportError>;

  /// On the export's thread: reports what the test wants until it tells the end.
  Outcome run(const ExportSettings& settings, const std::filesystem::path& to,
              const MovieExport::Progress& progress) {
    std::unique_lock lock(mutex_);
    usedSettings = settings;
    target = to;
    while (true) {
      changed_.wait(lock, [&] { return cancelled_ || end_ || progress_; });
      if (cancelled_) return std::unexpected(ExportError::cancelled());
      if (const auto share = std::exchange(progress_, std::nullopt)) progress(*share);
      if (end_) return (*end_)();
    }
  }
  void cancel() {
    const std::scoped_lock lock(mutex_);
    cancelled_ = true;
    changed_.notify_all();
  }
  void reach(double share) {
    const std::scoped_lock lock(mutex_);
    progress_ = share;
    changed_.notify_all();
  }
  void end(std::function<Outcome()> outcome) {
    const std::scoped_lock lock(mutex_);
    end_ = std::move(outcome);
    changed_.notify_all();
  }

  // What the export was started with.
  ExportSettings usedSettings;
  std::filesystem::path target;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<double> progress_;
  std::optional<std::function<Outcome()>> end_;
  bool cancelled_ = false;
};

class ScriptedExport : public MovieExport {
 public:
  explicit ScriptedExport(std::shared_ptr<Script> script) : script_(std::move(script)) {}
  std::expected<void, ExportError> run(const ExportSettings& settings,
                                       const std::filesystem::path& to,
                                       const Progress& progress) override {
    return script_->run(settings, to, progress);
  }
  void cancel() override { script_->cancel(); }

 private:
  std::shared_ptr<Script> script_;
};

class ExportControllerTest : public ExportStage {
 protected:
  ExportControllerTest() {
    renderer_ = makeRenderer(*project_, {});
    makeController();
  }

  void makeController() {
    controller_ = std::make_unique<ExportController>(
        [this](const ExportController::SaveRequest& request) {
          requests_.push_back(request);
          return answer_;
        },
        [this](const auto&,
               const compositor::CompositeSettings& look) -> std::unique_ptr<MovieExport> {
          looks_.push_back(look);
          if (beforeMaking_) beforeMaking_();
          if (!canDraw_) return nullptr;
          return std::make_unique<ScriptedExport>(script_);
        },
        [this](auto work) { main_.post(std::move(work)); });
    subscription_ = controller_->onChange([this] { ++changes_; });
  }

  void start() { controller_->start(project_, *renderer_); }
  /// Starts and lets the main thread hear that the export runs.
  void startAndRun() {
    script_ = std::make_shared<Script>();
    start();
    ASSERT_TRUE(main_.runOne());
    ASSERT_EQ(state(), ExportState(Exporting{0}));
  }
  void endWith(std::function<Script::Outcome()> outcome) {
    script_->end(std::move(outcome));
    ASSERT_TRUE(main_.runOne());
  }
  const ExportState& state() const { return controller_->state(); }

  std::shared_ptr<const package::RecordingProject> project_ =
      std::make_shared<const package::RecordingProject>(
          plainProject("/recordings/20261120-094107.recording", 1));
  std::unique_ptr<compositor::PreviewRenderer> renderer_;
  MainQueue main_;
  std::shared_ptr<Script> script_ = std::make_shared<Script>();
  std::optional<std::filesystem::path> answer_ = "/movies/out.mp4";
  bool canDraw_ = true;
  std::function<void()> beforeMaking_;
  std::vector<ExportController::SaveRequest> requests_;
  std::vector<compositor::CompositeSettings> looks_;
  int changes_ = 0;
  std::unique_ptr<ExportController> controller_;
  package::ChangeSignal::Subscription subscription_;
};

TEST_F(ExportControllerTest, beginsIdleWithTheDefaultChoice) {
  EXPECT_EQ(state(), ExportState(Idle{}));
  EXPECT_EQ(controller_->settings, (ExportSettings{.format = ExportSettings::Format::mp4,
                                                   .resolution = ExportSettings::Resolution::source,
                                                   .fps = 60,
                                                   .bppCoefficient = 0.08}));
}

TEST_F(ExportControllerTest, asksWithTheRecordingsName) {
  startAndRun();
  EXPECT_THAT(requests_,
              ElementsAre(ExportController::SaveRequest{"导出视频", "20261120-094107.mp4"}));
  endWith([] { return Script::Outcome{}; });
  EXPECT_EQ(script_->target, "/movies/out.mp4");
  controller_->settings.format = ExportSettings::Format::mov;
  startAndRun();
  EXPECT_EQ(requests_.back().suggestedName, "20261120-094107.mov");
}

TEST_F(ExportControllerTest, aDismissedPanelLeavesTheStateAsItWas) {
  answer_.reset();
  start();
  EXPECT_EQ(state(), ExportState(Idle{}));
  answer_ = "/movies/out.mp4";
  startAndRun();
  endWith([] { return Script::Outcome{}; });
  answer_.reset();
  start();
  EXPECT_EQ(state(), ExportState(Finished{"/movies/out.mp4"}));
  EXPECT_EQ(main_.waiting(), 0U);
}

TEST_F(ExportControllerTest, aMachineThatCannotDrawIsAFailedExport) {
  canDraw_ = false;
  start();
  ASSERT_TRUE(main_.runOne());
  EXPECT_EQ(state(), ExportState(Failed{"无法创建导出渲染器"}));
}

TEST_F(ExportControllerTest, aSecondStartWhileExportingDoesNothing) {
  startAndRun();
  start();
  EXPECT_EQ(requests_.size(), 1U) << "not even a panel";
  EXPECT_EQ(looks_.size(), 1U);
  EXPECT_EQ(state(), ExportState(Exporting{0}));
}

TEST_F(ExportControllerTest, aStartThatCameFromWithinThePanelCounts) {
  // A panel runs the main thread's events, and with them perhaps another start.
  bool nested = false;
  controller_ = std::make_unique<ExportController>(
      [&](const auto&) {
        if (!std::exchange(nested, true)) start();
        return answer_;
      },
      [this](const auto&, const auto& look) {
        looks_.push_back(look);
        return std::make_unique<ScriptedExport>(script_);
      },
      [this](auto work) { main_.post(std::move(work)); });
  start();
  ASSERT_TRUE(main_.runOne());
  EXPECT_EQ(looks_.size(), 1U);
}

TEST_F(ExportControllerTest, progressShowsAndEveryChangeIsTold) {
  startAndRun();
  EXPECT_EQ(changes_, 1);
  script_->reach(0.4);
  ASSERT_TRUE(main_.runOne());
  EXPECT_EQ(state(), ExportState(Exporting{0.4}));
  EXPECT_EQ(changes_, 2);
}

TEST_F(ExportControllerTest, anExportThatReturnsIsFinished) {
  startAndRun();
  endWith([] { return Script::Outcome{}; });
  EXPECT_EQ(state(), ExportState(Finished{"/movies/out.mp4"}));
}

TEST_F(ExportControllerTest, aFailureShowsItsText) {
  startAndRun();
  endWith([]() -> Script::Outcome {
    return std::unexpected(ExportError::writerFailed("磁盘空间不足"));
  });
  EXPECT_EQ(state(), ExportState(Failed{"写入失败：磁盘空间不足"}));
  startAndRun();
  endWith([]() -> Script::Outcome { return std::unexpected(ExportError::noVideoTrack()); });
  EXPECT_EQ(state(), ExportState(Failed{"源文件里没有视频轨"}));
}

TEST_F(ExportControllerTest, anyOtherErrorShowsItsOwnText) {
  startAndRun();
  endWith([]() -> Script::Outcome { throw std::runtime_error("内存不足"); });
  EXPECT_EQ(state(), ExportState(Failed{"内存不足"}));
}

TEST_F(ExportControllerTest, anErrorWithoutTextIsAFailedExport) {
  startAndRun();
  endWith([]() -> Script::Outcome { throw std::runtime_error(""); });
  EXPECT_EQ(state(), ExportState(Failed{"导出失败"}));
}

TEST_F(ExportControllerTest, cancellingShowsWhenTheExportHasEnded) {
  startAndRun();
  controller_->cancel();
  EXPECT_EQ(state(), ExportState(Exporting{0})) << "not before the end";
  ASSERT_TRUE(main_.runOne());
  EXPECT_EQ(state(), ExportState(Cancelled{}));
}

TEST_F(ExportControllerTest, cancelledRightAfterTheStartItIsNotAFailure) {
  std::mutex gate;
  gate.lock();
  beforeMaking_ = [&] { const std::scoped_lock wait(gate); };
  start();
  controller_->cancel();
  gate.unlock();
  while (!std::holds_alternative<Cancelled>(state())) {
    ASSERT_TRUE(main_.runOne());
    ASSERT_FALSE(std::holds_alternative<Failed>(state()));
  }
}

TEST_F(ExportControllerTest, cancellingWithoutAnExportDoesNothing) {
  controller_->cancel();
  EXPECT_EQ(state(), ExportState(Idle{}));
  startAndRun();
  endWith([] { return Script::Outcome{}; });
  controller_->cancel();
  EXPECT_EQ(state(), ExportState(Finished{"/movies/out.mp4"}));
}

TEST_F(ExportControllerTest, everyEndGoesBackToIdle) {
  const std::vector<std::function<Script::Outcome()>> ends{
      [] { return Script::Outcome{}; },
      []() -> Script::Outcome { return std::unexpected(ExportError::noVideoTrack()); },
      []() -> Script::Outcome { return std::unexpected(ExportError::cancelled()); }};
  for (const auto& end : ends) {
    startAndRun();
    controller_->reset();
    EXPECT_EQ(state(), ExportState(Exporting{0})) << "a running export is not reset";
    endWith(end);
    EXPECT_FALSE(std::holds_alternative<Exporting>(state()));
    controller_->reset();
    EXPECT_EQ(state(), ExportState(Idle{}));
  }
}

TEST_F(ExportControllerTest, everyEndMayBeFollowedByAnotherStart) {
  startAndRun();
  endWith([]() -> Script::Outcome { return std::unexpected(ExportError::cancelled()); });
  startAndRun();
  endWith([]() -> Script::Outcome { return std::unexpected(ExportError::noVideoTrack()); });
  startAndRun();
  endWith([] { return Script::Outcome{}; });
  startAndRun();
  canDraw_ = false;
  endWith([] { return Script::Outcome{}; });
  start();
  ASSERT_TRUE(main_.runOne());
  EXPECT_EQ(state(), ExportState(Failed{"无法创建导出渲染器"}));
}

TEST_F(ExportControllerTest, aLateProgressDoesNotBringTheExportBack) {
  std::vector<std::function<void()>> posted;
  MainQueue& ready = main_;
  controller_ = std::make_unique<ExportController>(
      [this](const auto&) { return answer_; },
      [this](const auto&, const auto&) { return std::make_unique<ScriptedExport>(script_); },
      [&](auto work) { ready.post([&posted, work] { posted.push_back(work); }); });
  start();
  script_->reach(0.5);
  ready.runOne();  // exporting
  ready.runOne();  // 0.5
  script_->end([] { return Script::Outcome{}; });
  ready.runOne();  // finished
  ASSERT_EQ(posted.size(), 3U);
  posted[0]();
  posted[2]();
  EXPECT_EQ(state(), ExportState(Finished{"/movies/out.mp4"}));
  posted[1]();
  EXPECT_EQ(state(), ExportState(Finished{"/movies/out.mp4"}));
  script_ = std::make_shared<Script>();
  start();
  ready.runOne();
  posted[3]();
  posted[1]();
  EXPECT_EQ(state(), ExportState(Exporting{0})) << "another export's progress";
}

TEST_F(ExportControllerTest, settingsChangedMeanwhileBelongToTheNextExport) {
  controller_->settings.fps = 30;
  renderer_->settings.pip.size = 0.3;
  startAndRun();
  controller_->settings.fps = 60;
  renderer_->settings.pip.size = 0.4;
  endWith([] { return Script::Outcome{}; });
  EXPECT_EQ(script_->usedSettings.fps, 30);
  EXPECT_EQ(looks_[0].pip.size, 0.3);
  startAndRun();
  endWith([] { return Script::Outcome{}; });
  EXPECT_EQ(script_->usedSettings.fps, 60);
  EXPECT_EQ(looks_[1].pip.size, 0.4);
}

TEST_F(ExportControllerTest, goingAwayEndsTheExport) {
  startAndRun();
  controller_.reset();
  EXPECT_EQ(script_->run({}, {}, [](double) {}).error(), ExportError::cancelled());
  while (main_.waiting() > 0) main_.runOne();  // finds nobody
}

TEST_F(ExportControllerTest, exportsARealTakeBesideTheWindowsContext) {
  const media::TemporaryFolder folder;
  std::filesystem::create_directory(folder / "take.recording");
  media::makeMovie(folder / "take.recording" / "screen.mov", {.ticks = {0}});
  const auto take = std::make_shared<const package::RecordingProject>(
      plainProject(folder / "take.recording", 0.5));
  answer_ = folder / "out.mp4";
  controller_ = std::make_unique<ExportController>(
      [this](const auto&) { return answer_; }, OffscreenExport::create,
      [this](auto work) { main_.post(std::move(work)); });
  controller_->start(take, *renderer_);
  while (std::holds_alternative<Idle>(state()) || std::holds_alternative<Exporting>(state())) {
    ASSERT_TRUE(main_.runOne());
  }
  EXPECT_EQ(state(), ExportState(Finished{*answer_}));
  EXPECT_EQ(media::inspect(*answer_).packets.size(), 30U);
}

}  // namespace
}  // namespace vesk::exporting
