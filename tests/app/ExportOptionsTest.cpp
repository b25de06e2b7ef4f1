#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/ExportOptions.h"
#include "motion/SmartZoom.h"

namespace vesk::app {
namespace {

using compositor::CompositeSettings;
using package::FrameStyle;
using package::RippleStyle;
using testing::Each;
using testing::Field;
using testing::IsEmpty;
using Arguments = std::vector<const char*>;
using Kind = package::RecordedEvent::Kind;

package::RecordingProject load(const char* take) {
  auto project = package::RecordingProject::load(take, package::Timestamp{});
  if (!project) throw std::runtime_error(project.error().message);
  return *std::move(project);
}

class ExportOptions : public testing::Test {
 protected:
  ExportLook look(const Arguments& options) const {
    Arguments arguments{"vesk", "--export", "movie.mp4"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return exportLook(CommandLine(arguments), project_);
  }
  CompositeSettings settings(const Arguments& options = {}) const { return look(options).settings; }

  /// The settings without options after a change to them; the track is left as it was.
  CompositeSettings changed(const std::function<void(CompositeSettings&)>& change) const {
    CompositeSettings plain = settings();
    change(plain);
    return plain;
  }

  package::RecordingProject project_ = load(VESK_MARKS_TAKE);
};

TEST_F(ExportOptions, withoutOptionsTheLookIsThatOfADefaultSession) {
  const ExportLook plain = look({});
  CompositeSettings expected;
  expected.cameraTrack =
      motion::buildTrack(plain.segments, motion::CursorTrack(project_), project_.duration(),
                         expected.camera3D, expected.transitionEase);
  EXPECT_TRUE(plain.settings == expected);
  EXPECT_EQ(plain.segments.size(),
            motion::combinedSegments(project_, motion::Sensitivity::standard, true).size());
  ASSERT_TRUE(plain.settings.cameraTrack);
  EXPECT_EQ(plain.settings.cameraTrack->t0, 0);
  EXPECT_EQ(plain.settings.cameraTrack->step, 0.016666666666666666);
}

TEST_F(ExportOptions, frameSwitchesTheFrameOn) {
  EXPECT_TRUE(settings({"--frame"}) == changed([](CompositeSettings& each) {
                each.frameStyle.enabled = true;
                each.frameStyle.background = FrameStyle::Background::gradient;
                each.frameStyle.padding = 0.07;
                each.frameStyle.cornerRadius = 0.018;
                each.frameStyle.shadow = 0.5;
              }));
}

TEST_F(ExportOptions, easeChoosesTheCurveAndRebuildsTheTrack) {
  for (const motion::CameraEase ease : motion::allCameraEases) {
    const std::string name(rawValue(ease));
    const CompositeSettings chosen = settings({"--ease", name.c_str()});
    EXPECT_EQ(chosen.transitionEase, ease);
    EXPECT_EQ(chosen.cameraTrack == settings().cameraTrack, ease == motion::CameraEase::smooth)
        << name;
  }
}

TEST_F(ExportOptions, anUnknownCurveIsIgnored) {
  for (const char* name : {"cinema", "", "平", "--frame"}) {
    EXPECT_EQ(settings({"--ease", name}).transitionEase, motion::CameraEase::smooth) << name;
  }
}

TEST_F(ExportOptions, perspectiveTurnsTheCamera) {
  const CompositeSettings turned = settings({"--3d"});
  package::Camera3DSettings camera;
  camera.enabled = true;
  EXPECT_EQ(turned.camera3D, camera);
  EXPECT_FALSE(turned.cameraTrack == settings().cameraTrack);
}

TEST_F(ExportOptions, theLensAndItsAnglesBelongToPerspective) {
  const CompositeSettings turned =
      settings({"--3d", "--fov", "40", "--yaw", "20", "--pitch", "-8.5", "--roll", "3"});
  EXPECT_EQ(turned.camera3D, (package::Camera3DSettings{
                                 .enabled = true, .fov = 40, .yaw = 20, .pitch = -8.5, .roll = 3}));
  ASSERT_TRUE(turned.cameraTrack);
  EXPECT_THAT(turned.cameraTrack->samples, Each(Field(&motion::CameraPose::fov, 40)));
}

TEST_F(ExportOptions, withoutPerspectiveTheLensHasNoEffect) {
  EXPECT_TRUE(settings({"--fov", "40"}) == settings());
  EXPECT_TRUE(settings({"--yaw", "40", "--pitch", "9", "--roll", "7"}) == settings());
}

TEST_F(ExportOptions, volumesAreGains) {
  EXPECT_TRUE(settings({"--sys-vol", "0.25", "--mic-vol", "1.5"}) ==
              changed([](CompositeSettings& each) {
                each.systemVolume = 0.25;
                each.micVolume = 1.5;
              }));
}

TEST_F(ExportOptions, ripplesCanBeLeftOut) {
  EXPECT_TRUE(settings({"--no-ripple"}) ==
              changed([](CompositeSettings& each) { each.rippleSettings.enabled = false; }));
}

TEST_F(ExportOptions, withoutAutomaticZoomsOnlyMarksCount) {
  const ExportLook marked = look({"--no-auto"});
  EXPECT_THAT(marked.segments, testing::Not(IsEmpty()));
  EXPECT_THAT(marked.segments, Each(Field(&motion::ZoomSegment::isManual, true)));

  std::vector<package::RecordedEvent> events = load(VESK_SAMPLE_TAKE).events;
  std::erase_if(events, [](const package::RecordedEvent& event) {
    return event.type == Kind::zoomIn || event.type == Kind::zoomOut;
  });
  project_ = package::RecordingProject::make(project_.url, project_.meta, std::move(events));
  EXPECT_FALSE(look({}).segments.empty());
  const ExportLook unmarked = look({"--no-auto"});
  EXPECT_TRUE(unmarked.segments.empty());
  ASSERT_TRUE(unmarked.settings.cameraTrack);
  EXPECT_THAT(unmarked.settings.cameraTrack->samples, Each(Field(&motion::CameraPose::framing, 1)));
}

TEST_F(ExportOptions, cursorChoosesItsStyle) {
  for (const package::CursorStyle style : package::allCursorStyles) {
    const std::string name(rawValue(style));
    EXPECT_TRUE(settings({"--cursor", name.c_str()}) ==
                changed([&](CompositeSettings& each) { each.cursorSettings.style = style; }));
  }
}

TEST_F(ExportOptions, anUnknownCursorIsIgnored) {
  EXPECT_TRUE(settings({"--cursor", "hand"}) == settings());
  EXPECT_TRUE(settings({"--cursor", ""}) == settings());
}

TEST_F(ExportOptions, rippleChoosesStyleAndDuration) {
  const auto rippling = [&](RippleStyle style, double duration) {
    return changed([&](CompositeSettings& each) {
      each.rippleSettings.style = style;
      each.rippleSettings.duration = duration;
    });
  };
  EXPECT_TRUE(settings({"--ripple", "ring"}) == rippling(RippleStyle::ring, 0.4));
  EXPECT_TRUE(settings({"--ripple", "dot"}) == rippling(RippleStyle::dot, 0.2));
  for (const char* name : {"ripple", "wave", "", "Ring", "--frame"}) {
    EXPECT_EQ(settings({"--ripple", name}).rippleSettings,
              rippling(RippleStyle::ripple, 0.25).rippleSettings)
        << name;
  }
}

TEST_F(ExportOptions, theCamerasWindowCanHaveAShadow) {
  EXPECT_TRUE(settings({"--pip-shadow", "0.6"}) ==
              changed([](CompositeSettings& each) { each.pip.shadow = 0.6; }));
}

TEST_F(ExportOptions, aValueThatIsNoNumberIsIgnored) {
  for (const char* flag : {"--sys-vol", "--mic-vol", "--pip-shadow"}) {
    for (const char* value : {"", " 1", "0.5x", "loud", "nan", "1e999"}) {
      EXPECT_TRUE(settings({flag, value}) == settings()) << flag << " " << value;
    }
  }
  EXPECT_TRUE(settings({"--3d", "--fov", "wide"}) == settings({"--3d"}));
}

TEST_F(ExportOptions, anOptionWithoutItsValueIsIgnored) {
  for (const char* flag :
       {"--ease", "--cursor", "--ripple", "--sys-vol", "--mic-vol", "--pip-shadow"}) {
    EXPECT_TRUE(settings({flag}) == settings()) << flag;
  }
  for (const char* flag : {"--fov", "--yaw", "--pitch", "--roll"}) {
    EXPECT_TRUE(settings({"--3d", flag}) == settings({"--3d"})) << flag;
  }
}

TEST_F(ExportOptions, optionsCountWhereverTheyStand) {
  const Arguments arguments{"vesk", "--3d", "--ripple", "dot", "--export", "movie.mp4", "--frame"};
  const CompositeSettings anywhere = exportLook(CommandLine(arguments), project_).settings;
  EXPECT_TRUE(anywhere == settings({"--frame", "--ripple", "dot", "--3d"}));
}

TEST_F(ExportOptions, unknownOptionsAreIgnored) {
  EXPECT_TRUE(settings({"--glow", "7", "--3D", "frame"}) == settings());
}

}  // namespace
}  // namespace vesk::app
