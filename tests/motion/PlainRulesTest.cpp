#include <gtest/gtest.h>

#include "motion/ManualMarks.h"
#include "motion/PlainRules.h"
#include "motion/RandomTake.h"
#include "motion/SmartZoom.h"

// The layer against the rules in their plainest form, bit for bit.
namespace vesk::motion {
namespace {

using test::RandomTake;

/// A take whose density of every kind of event varies from one seed to the next.
package::RecordingProject randomProject(RandomTake& random) {
  RandomTake::Shape shape;
  shape.duration = random.between(4, 20);
  shape.clicks = random.below(30);
  shape.movesPerSecond = random.chance(0.1) ? 0 : random.between(2, 90);
  shape.marks = random.chance(0.5) ? 0 : random.below(14);
  shape.appChanges = random.below(8);
  return random.project(shape);
}

/// One comparison a sample, so that a failure names the first one that differs.
void expectSame(const CameraTrack& fast, const CameraTrack& plain, std::uint64_t seed) {
  ASSERT_EQ(fast.samples.size(), plain.samples.size()) << "seed " << seed;
  for (std::size_t i = 0; i < fast.samples.size(); ++i) {
    ASSERT_EQ(fast.samples[i], plain.samples[i]) << "seed " << seed << " sample " << i;
  }
}

TEST(PlainRules, inferenceAgreesOnRandomTakes) {
  for (std::uint64_t seed = 0; seed < 400; ++seed) {
    RandomTake random(seed);
    const auto project = randomProject(random);
    ASSERT_EQ(pairManualMarks(project), plain::pairManualMarks(project)) << seed;
    for (const Sensitivity level : allSensitivities) {
      ASSERT_EQ(inferAutoSegments(project, level), plain::inferAutoSegments(project, level))
          << seed;
      for (const bool useAuto : {false, true}) {
        ASSERT_EQ(combinedSegments(project, level, useAuto),
                  plain::combinedSegments(project, level, useAuto))
            << seed;
      }
    }
  }
}

TEST(PlainRules, cursorSmoothingAgreesOnRandomTakes) {
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    RandomTake random(seed);
    const CursorTrack track(randomProject(random));
    for (int i = 0; i < 50; ++i) {
      const double t =
          !track.clickTimes.empty() && random.chance(0.5)
              ? track.clickTimes[random.below(track.clickTimes.size())] + random.between(-0.1, 0.1)
              : random.between(-1, 21);
      const double strength = random.between(0, 1);
      const double window = random.between(0, 0.5);
      ASSERT_EQ(track.effectiveStrength(t, strength), plain::effectiveStrength(track, t, strength))
          << seed;
      ASSERT_EQ(track.smoothed(t, strength, window), plain::smoothed(track, t, strength, window))
          << seed;
    }
  }
}

TEST(PlainRules, tracksOfInferredSegmentsAgreeOnRandomTakes) {
  for (std::uint64_t seed = 0; seed < 120; ++seed) {
    RandomTake random(seed);
    const auto project = randomProject(random);
    const auto segments = combinedSegments(project, Sensitivity::dense, true);
    const auto camera3D = random.camera3D();
    const CameraEase ease = random.ease();
    const CursorTrack cursor(project);
    expectSame(buildTrack(segments, cursor, project.duration(), camera3D, ease),
               plain::buildTrack(segments, cursor, project.duration(), camera3D, ease), seed);
  }
}

TEST(PlainRules, tracksOfEditedSegmentsAgreeOnRandomTakes) {
  for (std::uint64_t seed = 0; seed < 240; ++seed) {
    RandomTake random(1000 + seed);
    const auto project = randomProject(random);
    const auto segments = random.editedSegments(project.duration(), 1 + random.below(14));
    const auto camera3D = random.camera3D();
    const CameraEase ease = random.ease();
    const CursorTrack cursor(project);
    expectSame(buildTrack(segments, cursor, project.duration(), camera3D, ease),
               plain::buildTrack(segments, cursor, project.duration(), camera3D, ease), seed);
  }
}

}  // namespace
}  // namespace vesk::motion
