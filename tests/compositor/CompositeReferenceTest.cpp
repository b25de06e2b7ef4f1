#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include "compositor/CompositeScenes.h"
#include "compositor/CompositeTarget.h"
#include "compositor/CursorImage.h"
#include "compositor/PreviewRenderer.h"
#include "compositor/ReferenceComposite.h"
#include "compositor/ReferenceConversion.h"
#include "gpu/GpuTest.h"

namespace vesk::compositor {
namespace {

using Background = package::FrameStyle::Background;
using Shape = package::PiPSettings::Shape;
using package::CursorStyle;
using package::RippleStyle;

/// One composite: everything that it is made of, starting from a plain picture.
struct Scene {
  Scene() {
    settings.rippleSettings.enabled = false;
    settings.cursorSettings.visible = false;
    settings.pip.enabled = false;
  }

  CompositeSettings settings;
  motion::CameraPose pose;
  motion::CameraPose previousPose;
  double time = 1.0;
  int width = 320;
  int height = 180;
  int pictureWidth = 320;
  int pictureHeight = 180;
  int cameraWidth = 160;
  int cameraHeight = 90;
  bool hasEdges = false;       ///< in the screen picture
  bool showsPicture = true;    ///< the frame draw takes part
  double stepsAllowed = 0.06;  ///< share of the pixels that may lie beside a step

  void moveFrom(const motion::CameraPose& previous, double blur) {
    previousPose = previous;
    pose.motionBlur = blur;
  }
};

struct Case {
  std::string name;
  std::function<void(Scene&)> arrange;
};

void PrintTo(const Case& testCase, std::ostream* out) {
  *out << testCase.name;
}

/// How far two images lie apart, in steps of eight bits.
struct Difference {
  double mean = 0;
  double worst = 0;
  glm::ivec2 worstAt{0};
  double skipped = 0;  ///< share of pixels left out beside a step
};

/// True when the reference changes abruptly around a pixel. There the rounding of a place by a
/// graphics processor, which is a fraction of a pixel, shows as a difference of colour.
bool isBesideAStep(const test::DoubleImage& image, int x, int y) {
  constexpr double step = 20.0 / 255;
  glm::dvec4 low(1);
  glm::dvec4 high(0);
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      const glm::dvec4& near =
          image.at(std::clamp(x + dx, 0, image.width - 1), std::clamp(y + dy, 0, image.height - 1));
      low = glm::min(low, near);
      high = glm::max(high, near);
    }
  }
  const glm::dvec4 range = high - low;
  return std::max({range.r, range.g, range.b, range.a}) > step;
}

Difference difference(const test::DoubleImage& image, const test::DoubleImage& reference) {
  Difference result;
  int compared = 0;
  double sum = 0;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      if (isBesideAStep(reference, x, y)) continue;
      const glm::dvec4 apart = glm::abs(image.at(x, y) - reference.at(x, y)) * 255.0;
      const double worst = std::max({apart.r, apart.g, apart.b, apart.a});
      sum += (apart.r + apart.g + apart.b + apart.a) / 4;
      ++compared;
      if (worst > result.worst) {
        result.worst = worst;
        result.worstAt = {x, y};
      }
    }
  }
  result.mean = sum / std::max(compared, 1);
  result.skipped = 1 - compared / static_cast<double>(image.pixels.size());
  return result;
}

test::ReferencePicture cursorPicture(CursorStyle style) {
  const CursorImage bitmap = drawCursorImage(style).value();
  test::DoubleImage image(bitmap.width, bitmap.height);
  for (std::size_t index = 0; index < image.pixels.size(); ++index) {
    const auto channel = [&](std::size_t byte) {
      return static_cast<double>(bitmap.pixels[index * 4 + byte]) / 255;
    };
    image.pixels[index] = {channel(2), channel(1), channel(0), channel(3)};
  }
  return test::ReferencePicture(std::move(image));
}

class CompositeReference : public gpu::test::GpuTest, public ::testing::WithParamInterface<Case> {
 protected:
  static constexpr glm::vec4 clearColor{0.078F, 0.078F, 0.078F, 1};

  Difference compare(const Scene& scene) const {
    const auto renderer = take(PreviewRenderer::create(device()));
    renderer->settings = scene.settings;
    renderer->load(test::shared(
        test::makeProject(scene.pictureWidth, scene.pictureHeight,
                          {test::moveTo(0, 0.42, 0.37), test::clickAt(0.78, 0.7, 0.6),
                           test::clickAt(0.86, 0.3, 0.7), test::clickAt(0.94, 0.55, 0.3),
                           test::clickAt(0.98, 0.45, 0.6), test::moveTo(9, 0.42, 0.37)})));
    const media::VideoFrame screen =
        scene.hasEdges ? test::screenPicture(scene.pictureWidth, scene.pictureHeight)
                       : test::smoothPicture(scene.pictureWidth, scene.pictureHeight);
    const media::VideoFrame camera = test::smoothPicture(scene.cameraWidth, scene.cameraHeight);
    take(renderer->showScreen(screen));
    take(renderer->showCamera(camera));

    CompositePlan plan =
        renderer->plan(scene.pose, scene.previousPose, scene.time,
                       renderer->contentRect(scene.width, scene.height), scene.width, scene.height);
    if (!scene.showsPicture) plan.frame.reset();
    auto target = take(CompositeTarget::create(device(), scene.width, scene.height));
    target.draw(*renderer, plan, {}, clearColor, CompositeTarget::Redraw::always);

    const test::ReferencePicture screenPicture(test::decoded(screen));
    const test::ReferencePicture cameraPicture(test::decoded(camera));
    const test::ReferencePicture cursor = cursorPicture(scene.settings.cursorSettings.style);
    return difference(
        test::canvasImage(target.framebuffer()),
        test::referenceComposite(
            plan, {.screen = &screenPicture, .camera = &cameraPicture, .cursor = &cursor},
            clearColor));
  }
};

TEST_P(CompositeReference, equalsTheDoublePrecisionPicture) {
  Scene scene;
  GetParam().arrange(scene);
  const Difference result = compare(scene);
  RecordProperty("mean", std::to_string(result.mean));
  RecordProperty("worst", std::to_string(result.worst));
  RecordProperty("skipped", std::to_string(result.skipped));
  constexpr double rounding = 1e-6;  // of the subtraction
  EXPECT_LE(result.mean, 0.5);
  EXPECT_LE(result.worst, 3.0 + rounding) << "at " << result.worstAt.x << ", " << result.worstAt.y;
  EXPECT_LE(result.skipped, scene.stepsAllowed);
}

motion::CameraPose tilted(double yaw, double pitch, double roll, double fov, double framing) {
  motion::CameraPose pose = test::flatPose(framing, {0.6F, 0.45F});
  pose.yaw = yaw;
  pose.pitch = pitch;
  pose.roll = roll;
  pose.fov = fov;
  return pose;
}

void useFrame(Scene& scene, Background background = Background::gradient) {
  scene.settings.frameStyle.enabled = true;
  scene.settings.frameStyle.background = background;
}

void useLightFrame(Scene& scene) {
  useFrame(scene);
  scene.settings.frameStyle.colorA = {0.945F, 0.92F, 0.885F, 1};
  scene.settings.frameStyle.colorB = {0.875F, 0.83F, 0.77F, 1};
  scene.settings.frameStyle.cornerRadius = 0.08;
  scene.settings.frameStyle.shadow = 0.4;
}

std::vector<Case> pictureCases() {
  return {
      {"itsOwnSize", [](Scene& s) { s.hasEdges = true, s.stepsAllowed = 0.15; }},
      {"zoomed", [](Scene& s) { s.pose = test::flatPose(2.3, {0.3F, 0.6F}); }},
      {"magnifiedWithEdges",
       [](Scene& s) {
         s.pose = test::flatPose(6, {0.2F, 0.33F});
         s.hasEdges = true;
         s.stepsAllowed = 0.25;
       }},
      {"halfItsSize", [](Scene& s) { s.pictureWidth = 640, s.pictureHeight = 360; }},
      {"quarterItsSize", [](Scene& s) { s.pictureWidth = 1280, s.pictureHeight = 720; }},
      {"aLittleSmallerWithEdges",
       [](Scene& s) {
         s.pictureWidth = 640;
         s.pictureHeight = 360;
         s.pose = test::flatPose(1.3);
         s.hasEdges = true;
         s.stepsAllowed = 0.15;
       }},
      {"otherAspect", [](Scene& s) { s.width = 200, s.height = 200; }},
      {"tilted", [](Scene& s) { s.pose = tilted(18, -9, 0, 28, 1.6); }},
      {"tiltedWideAndRolled",
       [](Scene& s) {
         s.pictureWidth = 640;
         s.pictureHeight = 360;
         s.pose = tilted(-20, 10, 4, 52, 1);
       }},
      {"tiltedInAFrame",
       [](Scene& s) {
         s.pose = tilted(12, 6, -3, 34, 1.2);
         useLightFrame(s);
         s.stepsAllowed = 0.1;
       }},
  };
}

std::vector<Case> backdropCases() {
  const auto only = [](Scene& s, Background background) {
    useFrame(s, background);
    s.showsPicture = false;
  };
  return {
      {"gradient", [=](Scene& s) { only(s, Background::gradient); }},
      {"solid", [=](Scene& s) { only(s, Background::solid); }},
      {"none", [=](Scene& s) { only(s, Background::none); }},
      {"withoutShadow",
       [=](Scene& s) { only(s, Background::solid), s.settings.frameStyle.shadow = 0; }},
      {"light", [](Scene& s) { useLightFrame(s), s.showsPicture = false; }},
      {"portrait", [](Scene& s) { useLightFrame(s), s.width = 160, s.height = 260; }},
      {"underThePicture",
       [](Scene& s) { useFrame(s), s.pictureWidth = 640, s.pictureHeight = 360; }},
      {"squareCorners", [](Scene& s) { useFrame(s), s.settings.frameStyle.cornerRadius = 0; }},
      {"veryRound", [](Scene& s) { useFrame(s), s.settings.frameStyle.cornerRadius = 0.7; }},
  };
}

std::vector<Case> blurCases() {
  return {
      {"zoomingIn",
       [](Scene& s) {
         s.pose = test::flatPose(1.7);
         s.moveFrom(test::flatPose(1.55), 1);
       }},
      {"panning",
       [](Scene& s) {
         s.pose = test::flatPose(2, {0.5F, 0.5F});
         s.moveFrom(test::flatPose(2, {0.46F, 0.48F}), 0.6);
       }},
      {"fastPan",
       [](Scene& s) {
         s.pose = test::flatPose(2, {0.7F, 0.5F});
         s.moveFrom(test::flatPose(2, {0.3F, 0.4F}), 1);
       }},
      {"strong",
       [](Scene& s) {
         s.pose = test::flatPose(1.4);
         s.moveFrom(test::flatPose(1.3), 1);
         s.settings.motionBlurStrength = 2.5;
       }},
      {"minified",
       [](Scene& s) {
         s.pictureWidth = 640;
         s.pictureHeight = 360;
         s.pose = test::flatPose(1.2);
         s.moveFrom(test::flatPose(1.05), 1);
       }},
      {"tilting",
       [](Scene& s) {
         s.pose = tilted(14, 7, 0, 28, 1.7);
         s.moveFrom(tilted(9, 4, 0, 28, 1.6), 1);
         s.time = 1.25;
       }},
      {"inAFrame",
       [](Scene& s) {
         useFrame(s);
         s.pose = test::flatPose(1.7);
         s.moveFrom(test::flatPose(1.6), 1);
       }},
      {"tooLittleToSee",
       [](Scene& s) {
         s.pose = test::flatPose(1.5);
         s.moveFrom(test::flatPose(1.4995), 1);
       }},
      {"switchedOff",
       [](Scene& s) {
         s.pose = test::flatPose(1.7);
         s.moveFrom(test::flatPose(1.5), 1);
         s.settings.motionBlurEnabled = false;
       }},
  };
}

std::vector<Case> rippleCases() {
  const auto ripples = [](RippleStyle style, bool stroke, double size) {
    return [=](Scene& s) {
      s.settings.rippleSettings.enabled = true;
      s.settings.rippleSettings.style = style;
      s.settings.rippleSettings.stroke = stroke;
      s.settings.rippleSettings.size = size;
      s.stepsAllowed = 0.15;
    };
  };
  return {
      {"waves", ripples(RippleStyle::ripple, true, 0.2)},
      {"wavesWithoutStroke", ripples(RippleStyle::ripple, false, 0.2)},
      {"rings", ripples(RippleStyle::ring, true, 0.15)},
      {"dots", ripples(RippleStyle::dot, true, 0.15)},
      {"usualSize", ripples(RippleStyle::ripple, true, 0.022)},
      {"onATiltedPicture",
       [=](Scene& s) {
         ripples(RippleStyle::ring, true, 0.05)(s);
         s.pose = tilted(18, -9, 0, 28, 1.6);
       }},
  };
}

std::vector<Case> cursorCases() {
  std::vector<Case> cases;
  for (const CursorStyle style : package::allCursorStyles) {
    for (const int framing : {1, 2, 6}) {
      cases.push_back(
          {"style" + std::to_string(static_cast<int>(style)) + "AtZoom" + std::to_string(framing),
           [=](Scene& s) {
             s.settings.cursorSettings.visible = true;
             s.settings.cursorSettings.style = style;
             s.pose = test::flatPose(framing, {0.45F, 0.59F});
             s.stepsAllowed = 0.15;
           }});
    }
  }
  return cases;
}

void useCamera(Scene& scene, Shape shape) {
  scene.settings.pip.enabled = true;
  scene.settings.pip.shape = shape;
  scene.settings.pip.size = 0.45;
  scene.settings.pip.center = {0.7F, 0.6F};
  scene.settings.pip.shadow = 0.6;
}

std::vector<Case> cameraCases() {
  return {
      {"circle", [](Scene& s) { useCamera(s, Shape::circle); }},
      {"rounded", [](Scene& s) { useCamera(s, Shape::rounded); }},
      {"asItComes", [](Scene& s) { s.settings.pip.enabled = true; }},
      {"withoutBorderAndShadow",
       [](Scene& s) {
         useCamera(s, Shape::rounded);
         s.settings.pip.border = 0;
         s.settings.pip.shadow = 0;
         s.settings.pip.mirrored = false;
       }},
      {"portraitCameraInACircle",
       [](Scene& s) {
         useCamera(s, Shape::circle), s.cameraWidth = 120, s.cameraHeight = 200,
                                      s.stepsAllowed = 0.1;
       }},
      {"largeCameraPicture",
       [](Scene& s) { useCamera(s, Shape::rounded), s.cameraWidth = 640, s.cameraHeight = 480; }},
      {"acrossTheEdge",
       [](Scene& s) { useCamera(s, Shape::circle), s.settings.pip.center = {0.98F, 0.05F}; }},
  };
}

void useEverything(Scene& scene) {
  useFrame(scene);
  useCamera(scene, Shape::rounded);
  scene.settings.pip.size = 0.3;
  scene.settings.rippleSettings.enabled = true;
  scene.settings.rippleSettings.size = 0.06;
  scene.settings.cursorSettings.visible = true;
  scene.stepsAllowed = 0.15;
}

std::vector<Case> togetherCases() {
  return {
      {"flat", [](Scene& s) { useEverything(s); }},
      {"zoomed", [](Scene& s) { useEverything(s), s.pose = test::flatPose(1.8, {0.45F, 0.5F}); }},
      {"tilted", [](Scene& s) { useEverything(s), s.pose = tilted(14, 6, 2, 28, 1.4); }},
      {"minifiedCanvas",
       [](Scene& s) {
         useEverything(s);
         s.width = 640;
         s.height = 360;
         s.pictureWidth = 1280;
         s.pictureHeight = 720;
       }},
      {"blurred",
       [](Scene& s) {
         useEverything(s);
         s.pose = tilted(14, 6, 2, 28, 1.6);
         s.moveFrom(tilted(12, 5, 2, 28, 1.5), 1);
       }},
  };
}

std::string nameOf(const ::testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Picture, CompositeReference, ::testing::ValuesIn(pictureCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(Backdrop, CompositeReference, ::testing::ValuesIn(backdropCases()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Blur, CompositeReference, ::testing::ValuesIn(blurCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(Ripples, CompositeReference, ::testing::ValuesIn(rippleCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(Cursor, CompositeReference, ::testing::ValuesIn(cursorCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(Camera, CompositeReference, ::testing::ValuesIn(cameraCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(Together, CompositeReference, ::testing::ValuesIn(togetherCases()),
                         nameOf);

}  // namespace
}  // namespace vesk::compositor
