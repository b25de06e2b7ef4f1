#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "motion/EaseSpan.h"
#include "motion/FrameWalk.h"
#include "motion/MotionCriteria.h"
#include "motion/RandomTake.h"
#include "motion/TakeBuilder.h"
#include "motion/VisibleRectangle.h"

namespace vesk::motion {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A pose as a function of the frame's number.
using Path = std::function<CameraPose(int frame)>;

CameraPose flat(double framing, glm::vec2 target = {0.5F, 0.5F}) {
  CameraPose pose;
  pose.framing = framing;
  pose.target = target;
  return pose;
}

CameraPose still(int /*frame*/) {
  return flat(2);
}

ZoomSegment segmentFrom(double start, double end) {
  ZoomSegment segment;
  segment.start = start;
  segment.end = end;
  segment.easeIn = 0.5;
  segment.easeOut = 0.5;
  return segment;
}

/// A context with a track of this path; the cursor rests in the middle unless events say otherwise.
DumpCtx contextOf(double duration, std::vector<ZoomSegment> segments, const Path& path,
                  std::vector<package::RecordedEvent> events = {}) {
  DumpCtx context;
  context.p = test::take(duration, std::move(events));
  context.segs = std::move(segments);
  context.cursorTrack = CursorTrack(context.p);
  const int count = static_cast<int>(duration * 60) + 2;
  for (int frame = 0; frame < count; ++frame) {
    context.track.samples.push_back(path(frame));
  }
  return context;
}

Criterion measured(int number, const DumpCtx& context) {
  return measureCriteria(context).criterion(number);
}

}  // namespace

TEST(FrameWalk, includesTheLastTimeAndNothingBehindIt) {
  std::vector<double> times;
  walk(1.0, 1.0 + 3 * frameStep, frameStep, [&](double t) { times.push_back(t); });
  EXPECT_EQ(times.size(), 4U);
  EXPECT_EQ(times.front(), 1.0);
  EXPECT_EQ(times.back(), 1.0 + 3 * frameStep);
}

TEST(FrameWalk, isEmptyWhenTheEndLiesBeforeTheStart) {
  walk(2, 1.999, frameStep, [](double) { FAIL(); });
}

TEST(FrameWalk, gathersNoErrorOverAnHour) {
  double last = 0;
  walk(0, 3600, frameStep, [&](double t) { last = t; });
  EXPECT_EQ(last, 3600);
}

TEST(VisibleRectangle, isTheViewportOfASquareOnCamera) {
  const DumpCtx context = contextOf(1, {}, [](int) { return flat(4, {0.5F, 0.25F}); });
  const VisibleRectangle box = visibleRectangle(context.track, 0.5, context.camAspect);
  EXPECT_NEAR(box.low.x, 0.375, 1e-6);
  EXPECT_NEAR(box.low.y, 0.125, 1e-6);
  EXPECT_NEAR(box.high.x, 0.625, 1e-6);
  EXPECT_NEAR(box.high.y, 0.375, 1e-6);
}

TEST(VisibleRectangle, staysInsideThePictureWhenTheTargetDoesNot) {
  const DumpCtx context = contextOf(1, {}, [](int) { return flat(2, {0.0F, 1.0F}); });
  const VisibleRectangle box = visibleRectangle(context.track, 0.5, context.camAspect);
  EXPECT_NEAR(box.low.x, 0, 1e-6);
  EXPECT_NEAR(box.high.y, 1, 1e-6);
}

TEST(VisibleRectangle, isTheWholePictureWhereThePoseCannotBeSolved) {
  const float none = std::numeric_limits<float>::quiet_NaN();
  const DumpCtx context = contextOf(1, {}, [&](int) { return flat(2, {none, 0.5F}); });
  EXPECT_EQ(visibleRectangle(context.track, 0.5, context.camAspect), VisibleRectangle{});
}

TEST(VisibleRectangle, travelIsThatOfTheFasterCorner) {
  EXPECT_DOUBLE_EQ(travel({{0, 0}, {1, 1}}, {{0.25F, 0}, {0.5F, 1}}), 0.5);
}

TEST(MotionCriteria, bearTheirNumbersNamesAndLimits) {
  const MotionCriteria result = measureCriteria(contextOf(1, {}, still));
  const std::array<double, 10> limits{1.3, 0.06, 3, 0.08, 0.03, 1.05, 3, 0, 0.48, 0.01};
  for (std::size_t i = 0; i < limits.size(); ++i) {
    EXPECT_EQ(result.criteria.at(i).number, static_cast<int>(i) + 1);
    EXPECT_EQ(result.criteria.at(i).limit, limits.at(i));
    EXPECT_TRUE(result.criteria.at(i).pass);
    EXPECT_FALSE(result.criteria.at(i).at);
  }
  EXPECT_EQ(result.criterion(4).name, "推镜/变焦进度偏差");
  EXPECT_EQ(result.criterion(6).value, 1) << "nothing to come home from";
}

TEST(MotionCriteria, aTakeWithoutSegmentsFailsAsAWhole) {
  const DumpCtx context = contextOf(2, {}, still);
  EXPECT_THAT(failures(context, measureCriteria(context)), ElementsAre("基准包没有产出任何效果段"));
}

TEST(MotionCriteria, anEmptyTrackOfNoDurationIsMeasured) {
  const DumpCtx context = contextOf(0, {}, still);
  EXPECT_EQ(measured(2, context).value, 0);
}

TEST(MotionCriteria, zoomChangeComparesSamplesHalfASecondApart) {
  const Path jump = [](int frame) { return flat(frame < 60 ? 1.0 : 2.5); };
  const Criterion result = measured(1, contextOf(3, {}, jump));
  EXPECT_DOUBLE_EQ(result.value, 1.5);
  EXPECT_EQ(result.at, 1.0);
  EXPECT_EQ(result.failure, "1.500× > 1.3×");

  const Path slow = [](int frame) { return flat(frame < 60 ? 1.0 : 2.3); };
  EXPECT_TRUE(measured(1, contextOf(3, {}, slow)).pass) << "the limit itself passes";
}

TEST(MotionCriteria, speedIsThatOfTheVisibleBox) {
  const Path dash = [](int frame) { return flat(4, {frame < 31 ? 0.25F : 0.32F, 0.5F}); };
  const Criterion result = measured(2, contextOf(2, {}, dash));
  EXPECT_NEAR(result.value, 0.07, 1e-6);
  EXPECT_NEAR(*result.at, 31.0 / 60, 1e-9);
  EXPECT_EQ(result.failure, "0.0700 > 0.06 画面/帧 @ 0.52s");
}

TEST(MotionCriteria, aTargetOutsideThePictureMovesNothing) {
  const Path outside = [](int frame) { return flat(2, {frame < 31 ? 0.1F : 0.2F, 0.5F}); };
  EXPECT_NEAR(measured(2, contextOf(2, {}, outside)).value, 0, 1e-6);
}

TEST(MotionCriteria, everyReversalOfEveryEdgeCountsDuringThePushIn) {
  const Path wobble = [](int frame) { return flat(2, {frame % 2 == 0 ? 0.5F : 0.501F, 0.5F}); };
  const MotionCriteria result = measureCriteria(contextOf(4, {segmentFrom(1, 3)}, wobble));
  // 31 frames give 30 changes, so 29 reversals, on the left edge and on the right one.
  EXPECT_EQ(result.criterion(3).value, 58);
  EXPECT_NEAR(result.largestEaseInReversal, 0.001, 1e-6);
  EXPECT_THAT(result.criterion(3).failure, ::testing::StartsWith("58 次 > 3，最大 0.0010 @ 1."));
  EXPECT_EQ(result.criterion(7).value, 58) << "and the same on the way out";
}

TEST(MotionCriteria, reversalsOutsideTheEasesDoNotCount) {
  const Path wobble = [](int frame) {
    const bool held = frame > 92 && frame < 148;
    return flat(2, {held && frame % 2 == 0 ? 0.501F : 0.5F, 0.5F});
  };
  const MotionCriteria result = measureCriteria(contextOf(4, {segmentFrom(1, 3)}, wobble));
  EXPECT_EQ(result.criterion(3).value, 0);
  EXPECT_EQ(result.criterion(7).value, 0);
}

TEST(MotionCriteria, tremorBelowTheThresholdIsNoReversal) {
  const Path tremor = [](int frame) { return flat(2, {frame % 2 == 0 ? 0.5F : 0.50005F, 0.5F}); };
  EXPECT_EQ(measured(3, contextOf(4, {segmentFrom(1, 3)}, tremor)).value, 0);
}

TEST(MotionCriteria, aReversalNeedsAChangeInTheFrameJustBefore) {
  const Path pausing = [](int frame) {
    return flat(2, {frame % 4 < 2 ? 0.5F : 0.501F, 0.5F});  // moves every other frame
  };
  EXPECT_EQ(measured(3, contextOf(4, {segmentFrom(1, 3)}, pausing)).value, 0);
}

TEST(MotionCriteria, aPushInCutShortByItsSegmentIsNotMeasured) {
  const Path wobble = [](int frame) { return flat(2, {frame % 2 == 0 ? 0.5F : 0.501F, 0.5F}); };
  EXPECT_EQ(measured(3, contextOf(4, {segmentFrom(1, 1.04)}, wobble)).value, 0);
}

TEST(MotionCriteria, sizeAndPositionOfABuiltTrackKeepInStep) {
  DumpCtx context = contextOf(6, {segmentFrom(1, 5)}, still);
  context.segs[0].focus = {0.3F, 0.6F};
  for (const CameraEase ease : allCameraEases) {
    context.track = buildTrack(context.segs, context.cursorTrack, 6, {}, ease);
    const Criterion result = measured(4, context);
    EXPECT_LT(result.value, 0.02) << rawValue(ease);
  }
}

TEST(MotionCriteria, positionThatLagsBehindSizeIsFound) {
  const Path late = [](int frame) {
    const int push = std::clamp(frame - 60, 0, 30);
    const float size = 1 - 0.5F * static_cast<float>(std::min(push, 15)) / 15;
    const float origin = 0.3F * static_cast<float>(std::max(push - 15, 0)) / 15;
    return flat(1 / static_cast<double>(size), glm::vec2(origin + size / 2));
  };
  const DumpCtx context = contextOf(4, {segmentFrom(1, 3)}, late);
  const MotionCriteria result = measureCriteria(context);
  EXPECT_NEAR(result.criterion(4).value, 1, 1e-3);
  EXPECT_NEAR(*result.criterion(4).at, 1.25, 1e-9);
  EXPECT_EQ(result.criterion(4).failure, "1.000 > 0.08 @ 1.25s");
  ASSERT_TRUE(result.worstEaseIn);
  EXPECT_EQ(result.worstEaseIn->frames.size(), 31U);
  EXPECT_EQ(result.worstEaseIn->worst, 15U);
}

TEST(MotionCriteria, progressIsNotMeasuredWhereTheBoxHardlyMovesOrResizes) {
  const Path zoomAtTheCorner = [](int frame) {
    const float size = frame < 75 ? 1.0F : 0.5F;
    return flat(1 / static_cast<double>(size), glm::vec2(size / 2));
  };
  const MotionCriteria zoom = measureCriteria(contextOf(4, {segmentFrom(1, 3)}, zoomAtTheCorner));
  EXPECT_EQ(zoom.criterion(4).value, 0);
  EXPECT_FALSE(zoom.worstEaseIn);

  const Path pan = [](int frame) { return flat(2, {frame < 75 ? 0.3F : 0.6F, 0.5F}); };
  EXPECT_EQ(measured(4, contextOf(4, {segmentFrom(1, 3)}, pan)).value, 0);
}

TEST(MotionCriteria, driftAfterArrivalIsMeasuredFromJustBeforeIt) {
  const Path drift = [](int frame) {
    return flat(4, {0.3F + 0.002F * static_cast<float>(std::max(frame - 90, 0)), 0.5F});
  };
  ZoomSegment segment = segmentFrom(1, 1.85);  // 0.35 s left: measured, and past its end
  const Criterion result = measured(5, contextOf(4, {segment}, drift));
  EXPECT_NEAR(result.value, 0.0396, 0.0021);
  EXPECT_FALSE(result.pass);
  EXPECT_NEAR(*result.at, 1.83, 0.02);

  segment.end = 1.79;
  EXPECT_EQ(measured(5, contextOf(4, {segment}, drift)).value, 0) << "too little of it left";
  segment.end = 3;
  segment.followCursor = false;
  EXPECT_EQ(measured(5, contextOf(4, {segment}, drift)).value, 0) << "nothing takes over";
}

TEST(MotionCriteria, aResetThatDoesNotComeHomeIsFound) {
  std::vector<ZoomSegment> segments{segmentFrom(0.5, 1), segmentFrom(1.5, 2), segmentFrom(2.5, 9)};
  segments[0].endsWithExplicitReset = true;
  segments[2].endsWithExplicitReset = true;
  const Path path = [](int frame) { return flat(frame < 90 ? 1.05 : 1.4); };
  const MotionCriteria result = measureCriteria(contextOf(4, segments, path));
  EXPECT_EQ(result.explicitResets, 2);
  EXPECT_EQ(result.incompleteResets, 1);
  EXPECT_DOUBLE_EQ(result.criterion(6).value, 1.4);
  EXPECT_EQ(result.criterion(6).at, 4) << "not past the end of the recording";
  EXPECT_EQ(result.criterion(6).failure, "1 个，最差仍在 1.40× @ 4.00s");
}

TEST(MotionCriteria, aResetThatComesHomePasses) {
  std::vector<ZoomSegment> segments{segmentFrom(0.5, 1)};
  segments[0].endsWithExplicitReset = true;
  const Criterion result = measured(6, contextOf(4, segments, [](int) { return flat(1.05); }));
  EXPECT_TRUE(result.pass);
  EXPECT_DOUBLE_EQ(result.value, 1.05);
  EXPECT_EQ(result.at, 1);
}

class HeldCursor : public ::testing::Test {
 protected:
  /// Hold from 1.5 to 3.5, 121 frames, on the box 0.375…0.625; the cursor rests at x.
  static DumpCtx at(double x) {
    ZoomSegment segment = segmentFrom(1, 4);
    segment.waypoints = {{2, {0.5F, 0.5F}}};
    return contextOf(5, {segment}, [](int) { return flat(4); }, {test::move(0, x, 0.5)});
  }
};

TEST_F(HeldCursor, outOfViewCountsApartWhileFollowingTakesOver) {
  const MotionCriteria result = measureCriteria(at(0.9));
  EXPECT_EQ(result.takeoverFrames, 16) << "those of the first 0.26 s";
  EXPECT_EQ(result.criterion(8).value, 105) << "the rest, the pan's frames too";
  EXPECT_EQ(result.criterion(8).failure, "105 帧");
  EXPECT_NEAR(result.criterion(9).value, 1.6, 1e-5);
  EXPECT_EQ(result.criterion(9).at, 1.5) << "the whole walk, takeover included";
  EXPECT_EQ(result.criterion(9).failure, "1.600 > 0.48 @ 1.50s");
  EXPECT_EQ(result.movingShare, 1);
}

TEST_F(HeldCursor, insideTheDeadZoneMovesNothing) {
  const MotionCriteria result = measureCriteria(at(0.55));
  EXPECT_TRUE(result.criterion(8).pass);
  EXPECT_NEAR(result.criterion(9).value, 0.2, 1e-5);
  EXPECT_EQ(result.movingShare, 0);
}

TEST_F(HeldCursor, theDeadZoneIsThatOfTheSegment) {
  DumpCtx context = at(0.6);
  EXPECT_EQ(measureCriteria(context).movingShare, 1);
  context.segs[0].deadzone = 0.9;
  EXPECT_EQ(measureCriteria(context).movingShare, 0);
  context.segs[0].deadzone = -5;
  EXPECT_EQ(measureCriteria(context).movingShare, 1);
}

TEST_F(HeldCursor, ofASegmentThatDoesNotFollowIsNotMeasured) {
  DumpCtx context = at(0.9);
  context.segs[0].followCursor = false;
  EXPECT_EQ(measured(8, context).value, 0);
  EXPECT_EQ(measured(9, context).value, 0);
}

TEST_F(HeldCursor, isNotMeasuredBeyondTheEndOfTheSegment) {
  DumpCtx context = at(0.9);
  context.segs[0].end = 1.4;
  EXPECT_EQ(measured(9, context).value, 0);
  context.segs[0].end = 1.6;  // no room for a hold but its first instant
  EXPECT_EQ(measureCriteria(context).takeoverFrames, 1);
}

TEST(MotionCriteria, anAxisThatShowsTheWholePictureDoesNotCount) {
  const DumpCtx context =
      contextOf(5, {segmentFrom(1, 4)}, [](int) { return flat(1); }, {test::move(0, 1.8, -0.5)});
  EXPECT_EQ(measured(8, context).value, 0);
  EXPECT_EQ(measured(9, context).value, 0);
}

TEST(MotionCriteria, aJumpOfSpeedOnlyWarns) {
  const Path dash = [](int frame) {
    return flat(4, {0.25F + 0.03F * static_cast<float>(std::clamp(frame - 30, 0, 10)), 0.5F});
  };
  const DumpCtx context = contextOf(4, {segmentFrom(2, 3)}, dash);
  const MotionCriteria result = measureCriteria(context);
  EXPECT_NEAR(result.criterion(10).value, 0.03, 1e-6);
  EXPECT_NEAR(*result.criterion(10).at, 31.0 / 60, 1e-9);
  EXPECT_FALSE(result.criterion(10).pass);
  EXPECT_THAT(failures(context, result), IsEmpty());
}

TEST(MotionCriteria, theFirstSpeedIsNoJump) {
  const Path steady = [](int frame) {
    return flat(4, {0.2F + 0.02F * static_cast<float>(frame), 0.5F});
  };
  EXPECT_LT(measured(10, contextOf(0.25, {}, steady)).value, 1e-5);
}

TEST(MotionCriteria, failuresStandInTheOrderOfTheCriteria) {
  const Path wild = [](int frame) {
    return flat(frame % 30 == 0 && frame % 60 != 0 ? 5 : 1.2, {frame % 2 == 0 ? 0.2F : 0.8F, 0.5F});
  };
  const DumpCtx context = contextOf(4, {segmentFrom(1, 3)}, wild);
  const std::vector<std::string> texts = failures(context, measureCriteria(context));
  ASSERT_GE(texts.size(), 3U);
  EXPECT_THAT(texts[0], ::testing::HasSubstr("> 1.3×"));
  EXPECT_THAT(texts[1], ::testing::HasSubstr("画面/帧"));
  EXPECT_THAT(texts[2], ::testing::HasSubstr("次 > 3"));
}

TEST(MotionCriteria, areFiniteForAnyTake) {
  for (std::uint64_t seed = 1; seed <= 12; ++seed) {
    test::RandomTake random(seed);
    ReportOptions options;
    options.camera3D = random.camera3D();
    options.ease = random.ease();
    const DumpCtx context =
        makeDumpCtx(random.project({.duration = 20, .marks = seed % 3 * 4}), options);
    for (const Criterion& criterion : measureCriteria(context).criteria) {
      EXPECT_TRUE(std::isfinite(criterion.value)) << criterion.name << " seed " << seed;
      EXPECT_EQ(criterion.pass, criterion.value <= criterion.limit);
      EXPECT_TRUE(criterion.pass || criterion.at) << criterion.name << " seed " << seed;
    }
  }
}

}  // namespace vesk::motion
