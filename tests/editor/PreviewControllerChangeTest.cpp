#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <ostream>

#include "editor/SessionStage.h"

// What each change by the user entails: a step to undo, an inference, a new camera path, a save.
namespace vesk::editor::test {
namespace {

namespace fs = std::filesystem;
using package::EditDocument;

struct Change {
  std::string name;
  std::function<void(PreviewController&)> make;
  bool isManualBefore = true;
  int undoSteps = 0;
  bool infers = false;
  bool buildsTrack = true;
  bool saves = true;
  bool isManualAfter = true;
  int tellings = 1;  ///< of the timeline, one for each change
};

void PrintTo(const Change& change, std::ostream* out) {
  *out << change.name;
}

class ChangeTest : public SessionStage, public testing::WithParamInterface<Change> {};

TEST_P(ChangeTest, entailsWhatItShould) {
  const Change& change = GetParam();
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  const std::size_t inferred = session->timeline().segments.size();
  // A session whose second segment is gone tells an inference by its coming back.
  EditDocument edited = session->snapshot();
  edited.segments->pop_back();
  session->apply(edited);
  session->setHasManualEdits(change.isManualBefore);
  // What came before must not count: neither a save nor a track.
  session->flushSave();
  fs::remove(take / "edit.json");
  session->changeLook([](compositor::CompositeSettings& look) { look.cameraTrack.reset(); });
  const QSignalSpy told(session.get(), &PreviewController::timelineChanged);

  change.make(*session);

  EXPECT_EQ(told.count(), change.tellings);
  EXPECT_EQ(session->timeline().segments.size() == inferred, change.infers);
  EXPECT_EQ(session->look().cameraTrack.has_value(), change.buildsTrack);
  EXPECT_EQ(session->hasManualEdits(), change.isManualAfter);
  const auto isSaved = [&] { return fs::exists(take / "edit.json"); };
  if (change.saves) {
    EXPECT_TRUE(QTest::qWaitFor(isSaved));
  } else {
    runEvents(PreviewController::saveDelay + std::chrono::milliseconds(150));
    EXPECT_FALSE(isSaved());
  }
  int steps = 0;
  for (; session->canUndo(); ++steps) session->undo();
  EXPECT_EQ(steps, change.undoSteps);
}

std::string firstSegment(const PreviewController& session) {
  return session.timeline().segments.at(0).id;
}

package::Camera3DSettings steepPreset() {
  return {.enabled = true, .fov = 40, .yaw = 30, .pitch = 10, .roll = 0};
}

const std::vector<Change> changes{
    {.name = "autoDetection",
     .make =
         [](PreviewController& session) {
           session.changeUseAutoDetection(false);
           session.changeUseAutoDetection(true);
         },
     .undoSteps = 2,
     .infers = true,
     .isManualAfter = false,
     .tellings = 2},
    {.name = "sensitivity",
     .make =
         [](PreviewController& session) {
           session.changeSensitivity(motion::Sensitivity::dense);
           session.changeSensitivity(motion::Sensitivity::conservative);
         },
     .undoSteps = 2,
     .infers = true,
     .isManualAfter = false,
     .tellings = 2},
    {.name = "resetWithoutManualEdits",
     .make = [](PreviewController& session) { session.resetToAutomatic(); },
     .isManualBefore = false,
     .infers = true,
     .saves = false,
     .isManualAfter = false},
    {.name = "resetConfirmed",
     .make = [](PreviewController& session) { session.resetToAutomatic(); },
     .undoSteps = 1,
     .infers = true,
     .saves = false,
     .isManualAfter = false},
    {.name = "followSpeed",
     .make = [](PreviewController& session) { session.changeFollowSpeed(0.9); }},
    {.name = "followSpeedWithoutManualEdits",
     .make = [](PreviewController& session) { session.changeFollowSpeed(0.9); },
     .isManualBefore = false,
     .isManualAfter = false},
    {.name = "transitionEase",
     .make =
         [](PreviewController& session) {
           session.changeTransitionEase(motion::CameraEase::cinema);
         },
     .isManualBefore = false,
     .isManualAfter = false},
    {.name = "cameraPreset",
     .make = [](PreviewController& session) { session.changeCamera3D(steepPreset()); },
     .isManualBefore = false,
     .isManualAfter = false},
    {.name = "segmentChanged",
     .make =
         [](PreviewController& session) {
           for (const double level : {2.5, 3.0}) {
             session.changeSegment(firstSegment(session),
                                   [&](motion::ZoomSegment& segment) { segment.level = level; });
           }
         },
     .isManualBefore = false,
     .undoSteps = 1,
     .tellings = 2},
    {.name = "segmentDragged",
     .make =
         [](PreviewController& session) {
           session.setSegmentTimes(firstSegment(session), 1, 4);
           session.setSegmentTimes(firstSegment(session), 1, 4.5);
           session.rebuildTrack();
         },
     .isManualBefore = false,
     .undoSteps = 1,
     .tellings = 3},
    {.name = "segmentAdded",
     .make =
         [](PreviewController& session) {
           session.addSegment(14);
           session.deleteSegment("user_14000");
         },
     .isManualBefore = false,
     .undoSteps = 2,
     .tellings = 2},
    {.name = "segmentDuplicated",
     .make =
         [](PreviewController& session) {
           // One more is as many as the inference makes, so it does not stay.
           session.deleteSegment(*session.duplicateSegment(firstSegment(session)));
         },
     .isManualBefore = false,
     .undoSteps = 2,
     .tellings = 2},
    {.name = "effectToggled",
     .make =
         [](PreviewController& session) {
           const double time = session.timeline().segments.at(0).start + 1;
           session.toggleEffect(time);
           session.toggleEffect(time);
         },
     .isManualBefore = false,
     .undoSteps = 2,
     .tellings = 2},
    {.name = "volumes",
     .make =
         [](PreviewController& session) {
           session.changeVolumes(0.5, 1.5);
           session.changeVolumes(0.6, 1.4);
         },
     .isManualBefore = false,
     .undoSteps = 1,
     .buildsTrack = false,
     .isManualAfter = false,
     .tellings = 0},
    {.name = "segmentToggled",
     .make =
         [](PreviewController& session) { session.toggleSegmentEnabled(firstSegment(session)); },
     .isManualBefore = false,
     .undoSteps = 1},
};

INSTANTIATE_TEST_SUITE_P(PreviewController, ChangeTest, testing::ValuesIn(changes),
                         [](const auto& chosen) { return chosen.param.name; });

}  // namespace
}  // namespace vesk::editor::test
