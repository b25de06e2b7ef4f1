#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editor/PlaybackComposition.h"
#include "package/TemporaryDirectory.h"

namespace vesk::editor {
namespace {

namespace fs = std::filesystem;
using package::RecordingProject;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

RecordingProject take() {
  return *RecordingProject::load(VESK_SAMPLE_TAKE, {});
}

/// The sample take with another index.
RecordingProject takeWith(const std::function<void(package::RecordingMeta&)>& change) {
  RecordingProject project = take();
  change(project.meta);
  return project;
}

TEST(PlaybackComposition, laysTheMicrophoneBesideTheScreenAtItsTruePlace) {
  const PlaybackComposition composition = composePlayback(take());
  EXPECT_TRUE(composition.isComposed);
  ASSERT_THAT(composition.tracks, SizeIs(3));
  EXPECT_EQ(composition.tracks[0].kind, PlaybackTrack::Kind::video);
  EXPECT_EQ(composition.systemTrackID, composition.tracks[1].id);
  const PlaybackTrack& mic = composition.tracks[2];
  EXPECT_EQ(composition.micTrackID, mic.id);
  ASSERT_THAT(mic.segments, SizeIs(2));
  EXPECT_TRUE(mic.segments[0].isEmpty);
  // 0.183 s on a grid of 600ths.
  EXPECT_DOUBLE_EQ(mic.segments[1].target, 110.0 / 600);
}

TEST(PlaybackComposition, isNotLongerThanTheRecording) {
  const PlaybackComposition composition =
      composePlayback(takeWith([](auto& meta) { meta.duration = 4; }));
  EXPECT_EQ(composition.duration, 4);
  for (const PlaybackTrack& track : composition.tracks) EXPECT_LE(track.end(), 4 + 1e-9);
}

TEST(PlaybackComposition, withoutAMicrophoneIsTheScreensFileAsItIs) {
  const auto project = RecordingProject::load(VESK_MARKS_TAKE, {});
  const PlaybackComposition composition = composePlayback(*project);
  EXPECT_FALSE(composition.isComposed);
  EXPECT_FALSE(composition.systemTrackID);
  EXPECT_FALSE(composition.micTrackID);
  EXPECT_THAT(trackLayoutLines(composition),
              ElementsAre("素材不是 composition（没有麦克风时就是原始 screen.mov）"));
  EXPECT_THAT(trackLayoutWarnings(composition, *project), IsEmpty());
}

TEST(PlaybackComposition, aMicrophoneThatStartsAfterTheEndIsNotAdded) {
  const auto project =
      takeWith([](auto& meta) { meta.micFirstSamplePTS = *meta.firstFramePTS + 11; });
  const PlaybackComposition composition = composePlayback(project);
  EXPECT_TRUE(composition.isComposed);
  EXPECT_TRUE(composition.systemTrackID);
  EXPECT_FALSE(composition.micTrackID);
  EXPECT_THAT(trackLayoutWarnings(composition, project),
              ElementsAre("只有 1 条音轨——麦克风没挂上"));
}

TEST(PlaybackComposition, aMicrophoneThatStartedFirstStandsAtTheBeginning) {
  const PlaybackComposition composition = composePlayback(
      takeWith([](auto& meta) { meta.micFirstSamplePTS = *meta.firstFramePTS - 3; }));
  ASSERT_TRUE(composition.micTrackID);
  EXPECT_EQ(composition.tracks[2].start(), 0);
  EXPECT_THAT(composition.tracks[2].segments, SizeIs(1));
}

TEST(PlaybackComposition, aRecordingWithoutLengthPlaysTheScreenAlone) {
  RecordingProject project = take();
  project.meta.duration = 0;
  EXPECT_FALSE(composePlayback(project).isComposed);
}

TEST(PlaybackComposition, ofFilesThatCannotBeReadIsEmpty) {
  const package::TemporaryDirectory folder;
  folder.put("screen.mov", "no movie");
  folder.put("mic.m4a", "no sound");
  package::RecordingMeta meta;
  meta.duration = 5;
  const auto project = RecordingProject::make(folder.path(), meta, {});
  const PlaybackComposition composition = composePlayback(project);
  EXPECT_THAT(composition.tracks, IsEmpty());
  EXPECT_EQ(composition.duration, 0);
}

TEST(PlaybackComposition, doesNotFollowALinkOutOfThePackage) {
  const package::TemporaryDirectory folder;
  fs::create_symlink(fs::path(VESK_SAMPLE_TAKE) / "screen.mov", folder.path() / "screen.mov");
  package::RecordingMeta meta;
  meta.duration = 5;
  EXPECT_THAT(composePlayback(RecordingProject::make(folder.path(), meta, {})).tracks, IsEmpty());
}

TEST(TrackLayout, hasALineForEachTrack) {
  const PlaybackComposition composition{
      .isComposed = true,
      .duration = 5,
      .tracks = {
          {.id = 1, .kind = PlaybackTrack::Kind::video, .segments = {{.target = 0, .length = 5}}},
          {.id = 3,
           .kind = PlaybackTrack::Kind::audio,
           .segments = {{.target = 0, .length = 0.5, .isEmpty = true},
                        {.target = 0.5, .length = 4.5}}}}};
  EXPECT_THAT(trackLayoutLines(composition),
              ElementsAre("视频  id=1  轨范围 0.000 → 5.000   [目标 0.000+5.000 ← 源 0.000]",
                          "音频  id=3  轨范围 0.000 → 5.000   [目标 0.000+0.500 ← 源 0.000]"
                          "[目标 0.500+4.500 ← 源 0.000]"));
}

TEST(TrackLayout, warnsOfWhatIsOutOfOrder) {
  package::RecordingMeta meta;
  meta.duration = 10;
  const auto project = RecordingProject::make("nowhere.recording", meta, {});
  const PlaybackTrack holed{.id = 1,
                            .kind = PlaybackTrack::Kind::video,
                            .segments = {{.target = 0, .length = 4},
                                         {.target = 4, .length = 0.3, .isEmpty = true},
                                         {.target = 4.3, .length = 7}}};
  const PlaybackTrack empty{.id = 2, .kind = PlaybackTrack::Kind::audio};
  EXPECT_THAT(trackLayoutWarnings({.duration = 11.01, .tracks = {holed, empty}}, project),
              ElementsAre("素材时长 11.01s 远超录制时长 10.00s —— 轨道被顶开了",
                          "视频轨中间有 0.30s 空洞", "轨 id=2 是空的"));
  EXPECT_THAT(trackLayoutWarnings({.duration = 11.0}, project), IsEmpty());
}

}  // namespace
}  // namespace vesk::editor
