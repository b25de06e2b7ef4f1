#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "compositor/CompositePlan.h"
#include "compositor/CompositeScenes.h"

namespace vesk::compositor {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A take with a cursor and a click in progress, on a canvas of its own size.
struct Stage {
  CompositeSettings settings;
  package::RecordingProject project = test::makeProject(
      1280, 720,
      {test::moveTo(0, 0.3, 0.4), test::clickAt(0.9, 0.3, 0.4), test::moveTo(9, 0.3, 0.4)});
  std::optional<double> cameraAspect = 4.0 / 3;
  motion::CameraPose pose;
  motion::CameraPose previousPose;
  double time = 1;
  int width = 1280;
  int height = 720;

  CompositePlan plan() const {
    const motion::CursorTrack track(project);
    const CompositeScene scene{.settings = settings,
                               .project = &project,
                               .cursorTrack = &track,
                               .pictureWidth = 1280,
                               .pictureHeight = 720,
                               .cameraAspect = cameraAspect};
    return planComposite(scene, pose, previousPose, time,
                         contentRect(&project.meta, settings.frameStyle, width, height), width,
                         height);
  }
};

TEST(CompositePlan, holdsEveryPartOfTheComposite) {
  Stage stage;
  stage.settings.frameStyle.enabled = true;
  const CompositePlan plan = stage.plan();
  EXPECT_TRUE(plan.backdrop.has_value());
  EXPECT_TRUE(plan.frame.has_value());
  EXPECT_THAT(plan.ripples, SizeIs(1));
  EXPECT_TRUE(plan.cursor.has_value());
  EXPECT_TRUE(plan.camera.has_value());
}

TEST(CompositePlan, whatIsSwitchedOffIsLeftOut) {
  Stage stage;
  stage.settings.rippleSettings.enabled = false;
  stage.settings.cursorSettings.visible = false;
  stage.settings.pip.enabled = false;
  const CompositePlan plan = stage.plan();
  EXPECT_FALSE(plan.backdrop.has_value());
  EXPECT_TRUE(plan.frame.has_value());
  EXPECT_THAT(plan.ripples, IsEmpty());
  EXPECT_FALSE(plan.cursor.has_value());
  EXPECT_FALSE(plan.camera.has_value());
}

TEST(CompositePlan, withoutACameraPictureThereIsNoWindow) {
  Stage stage;
  stage.cameraAspect.reset();
  EXPECT_FALSE(stage.plan().camera.has_value());
}

TEST(CompositePlan, withoutARecordingThePictureStillShows) {
  const CompositeSettings settings;
  const CompositeScene scene{.settings = settings, .pictureWidth = 1280, .pictureHeight = 720};
  const CompositePlan plan = planComposite(scene, {}, {}, 1, {}, 1280, 720);
  EXPECT_TRUE(plan.frame.has_value());
  EXPECT_THAT(plan.ripples, IsEmpty());
  EXPECT_FALSE(plan.cursor.has_value());
}

TEST(CompositePlan, whereNoCameraShowsThePictureOnlyTheSurroundingsStay) {
  Stage stage;
  stage.settings.frameStyle.enabled = true;
  stage.project.meta.captureWidth = 0;
  const CompositePlan plan = stage.plan();
  EXPECT_TRUE(plan.backdrop.has_value());
  EXPECT_FALSE(plan.frame.has_value());
  EXPECT_THAT(plan.ripples, IsEmpty());
  EXPECT_FALSE(plan.cursor.has_value());
  EXPECT_TRUE(plan.camera.has_value());
}

TEST(CompositePlan, theSamePoseTwiceGivesTheSameMatrixTwice) {
  Stage stage;
  stage.pose = test::flatPose(2, {0.3F, 0.3F});
  stage.pose.motionBlur = 1;
  stage.previousPose = stage.pose;
  const CompositePlan::Frame frame = stage.plan().frame.value();
  EXPECT_EQ(frame.uniforms.mvp, frame.uniforms.prevMVP);
  EXPECT_EQ(frame.sampling.taps, 1);
}

TEST(CompositePlan, theBackdropCarriesTheFrameStyle) {
  Stage stage;
  stage.settings.frameStyle = {.enabled = true,
                               .background = package::FrameStyle::Background::gradient,
                               .padding = 0.1,
                               .cornerRadius = 0.03,
                               .shadow = 0.4,
                               .colorA = {1, 0, 0, 1},
                               .colorB = {0, 1, 0, 1}};
  const BackdropUniforms backdrop = stage.plan().backdrop.value();
  EXPECT_EQ(backdrop.colorA, glm::vec4(1, 0, 0, 1));
  EXPECT_EQ(backdrop.colorB, glm::vec4(0, 1, 0, 1));
  EXPECT_FLOAT_EQ(backdrop.rect.x, 0.1F);
  EXPECT_FLOAT_EQ(backdrop.rect.w, 0.8F);
  EXPECT_FLOAT_EQ(backdrop.cornerRadius, 0.03F);
  EXPECT_FLOAT_EQ(backdrop.shadow, 0.4F);
  EXPECT_FLOAT_EQ(backdrop.aspect, 16.0F / 9.0F);
  EXPECT_EQ(backdrop.isGradient, 1);
  stage.settings.frameStyle.background = package::FrameStyle::Background::solid;
  EXPECT_EQ(stage.plan().backdrop->isGradient, 0);
  stage.settings.frameStyle.background = package::FrameStyle::Background::none;
  EXPECT_EQ(stage.plan().backdrop->isGradient, 0);
}

TEST(CompositePlan, thePictureIsCutRoundOnlyInAFrame) {
  Stage stage;
  EXPECT_EQ(stage.plan().frame->uniforms.cornerRadius, 0);
  stage.settings.frameStyle.enabled = true;
  EXPECT_FLOAT_EQ(stage.plan().frame->uniforms.cornerRadius, 0.02F);
}

TEST(CompositePlan, theBlurIsThePosesTimesTheStrength) {
  Stage stage;
  stage.pose.motionBlur = 0.6;
  stage.settings.motionBlurStrength = 1.5;
  EXPECT_FLOAT_EQ(stage.plan().frame->uniforms.blur, 0.9F);
  stage.settings.motionBlurEnabled = false;
  EXPECT_EQ(stage.plan().frame->uniforms.blur, 0);
}

TEST(CompositePlan, theJitterMovesWithTheFramesOfABlurredPicture) {
  Stage stage;
  stage.pose = test::flatPose(2);
  stage.pose.motionBlur = 1;
  stage.previousPose = test::flatPose(1.8);
  stage.time = 2.0;
  EXPECT_EQ(stage.plan().frame->sampling.frameIndex, 120U);
  stage.previousPose = stage.pose;
  EXPECT_EQ(stage.plan().frame->sampling.frameIndex, 0U) << "a sharp picture has no jitter";
}

TEST(CompositePlan, smallerLevelsAreLookedAtOnlyWhereThePictureIsMadeSmaller) {
  Stage stage;
  EXPECT_FALSE(stage.plan().frame->isMinified) << "its own size";
  stage.pose = test::flatPose(3);
  EXPECT_FALSE(stage.plan().frame->isMinified) << "magnified";
  stage.pose = {};
  stage.width = 640;
  stage.height = 360;
  EXPECT_TRUE(stage.plan().frame->isMinified) << "a smaller canvas";
  stage.pose = test::flatPose(3);
  EXPECT_FALSE(stage.plan().frame->isMinified) << "a smaller canvas, but close up";
}

TEST(CompositePlan, aCanvasWithoutHeightIsNoFault) {
  Stage stage;
  stage.height = 0;
  EXPECT_EQ(stage.plan().frame->uniforms.aspect, 1280);
}

// Matrices that move the whole picture sideways by some pixels of a canvas 1000 wide.
FrameUniforms shiftedBy(float pixels, float blur) {
  FrameUniforms uniforms{.blur = blur, .canvasWidth = 1000, .canvasHeight = 500};
  uniforms.mvp[3].x = pixels / 500;
  return uniforms;
}

TEST(BlurTaps, belowHalfAPixelThereIsNoBlur) {
  EXPECT_EQ(blurTaps(shiftedBy(0, 1)), 1);
  EXPECT_EQ(blurTaps(shiftedBy(0.45F, 1)), 1);
  EXPECT_GT(blurTaps(shiftedBy(0.55F, 1)), 1);
  EXPECT_EQ(blurTaps(shiftedBy(0.9F, 0.5F)), 1) << "shortened by the amount";
}

TEST(BlurTaps, growWithTheMotionUpToThirtyTwo) {
  int before = 1;
  for (float pixels = 1; pixels < 200; pixels += 1) {
    const int taps = blurTaps(shiftedBy(pixels, 1));
    EXPECT_GE(taps, before);
    EXPECT_GE(taps, 2);
    EXPECT_LE(taps, maxBlurTaps);
    before = taps;
  }
  EXPECT_EQ(before, 32);
  EXPECT_EQ(blurTaps(shiftedBy(1e9F, 1)), 32);
}

TEST(BlurTaps, withoutAnAmountThereIsNone) {
  EXPECT_EQ(blurTaps(shiftedBy(100, 0)), 1);
  EXPECT_EQ(blurTaps(shiftedBy(100, -1)), 1);
  EXPECT_EQ(blurTaps(shiftedBy(100, std::numeric_limits<float>::quiet_NaN())), 1);
}

TEST(BlurTaps, theCornersDecide) {
  // A zoom about the centre moves nothing there, but the corners.
  FrameUniforms uniforms{.blur = 1, .canvasWidth = 1000, .canvasHeight = 500};
  uniforms.mvp[0].x = 1.1F;
  uniforms.mvp[1].y = 1.1F;
  EXPECT_GT(blurTaps(uniforms), 10);
}

TEST(BlurTaps, aCornerBehindTheCameraTakesTheMost) {
  FrameUniforms uniforms = shiftedBy(0, 1);
  uniforms.prevMVP[0].w = -4;
  EXPECT_EQ(blurTaps(uniforms), maxBlurTaps);
}

}  // namespace
}  // namespace vesk::compositor
