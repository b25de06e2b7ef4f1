#include <random>

#include "compositor/CompositeScenes.h"
#include "compositor/CompositeTarget.h"
#include "compositor/TestPicture.h"
#include "gpu/GpuTest.h"

namespace vesk::compositor {
namespace {

using Redraw = CompositeTarget::Redraw;

constexpr int width = 320;
constexpr int height = 180;
constexpr glm::vec4 black{0, 0, 0, 1};

/// A take in which the user moves and clicks all the time.
package::RecordingProject busyProject(std::mt19937& random) {
  std::uniform_real_distribution<double> anywhere(0, 1);
  std::vector<package::RecordedEvent> events;
  for (int index = 0; index < 300; ++index) {
    events.push_back(test::moveTo(index / 30.0, anywhere(random), anywhere(random)));
    if (index % 23 == 0) {
      events.push_back(test::clickAt(index / 30.0, anywhere(random), anywhere(random)));
    }
  }
  return test::makeProject(width, height, std::move(events));
}

/// What the user sees from frame to frame, changing by chance: mostly a little, at times a lot.
class RandomShow {
 public:
  explicit RandomShow(unsigned seed)
      : random_(seed),
        project_(test::shared(busyProject(random_))),
        screen_(test::screenPicture(width, height)) {
    settings_.pip.size = 0.3;
    settings_.rippleSettings.size = 0.05;
  }

  const CompositeSettings& settings() const { return settings_; }
  const std::shared_ptr<const package::RecordingProject>& project() const { return project_; }
  const media::VideoFrame& screen() const { return screen_; }
  const std::optional<media::VideoFrame>& camera() const { return camera_; }
  const motion::CameraPose& pose() const { return pose_; }
  const motion::CameraPose& previousPose() const { return previousPose_; }
  double time() const { return time_; }

  void advance() {
    previousPose_ = pose_;
    if (chance(0.7)) time_ += 1.0 / 30;
    if (chance(0.3)) editScreen();
    if (chance(0.12)) pose_ = randomPose();
    if (chance(0.1)) editStyle();
    if (chance(0.1)) {
      camera_ = randomCamera();
      settings_.pip.enabled = chance(0.7);
    }
  }

 private:
  bool chance(double probability) { return number(0, 1) < probability; }
  double number(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

  void editScreen() {
    const int left = whole(0, width - 1);
    const int top = whole(0, height - 1);
    const int right = left + whole(1, 40);
    const int bottom = top + whole(1, 20);
    const int value = whole(0, 255);
    screen_ = test::withSamples(screen_, [&](int, int x, int y) {
      return x >= left && x < right && y >= top && y < bottom ? value : -1;
    });
  }

  motion::CameraPose randomPose() {
    motion::CameraPose pose;
    if (chance(0.3)) return pose;
    pose = test::flatPose(number(1, 4), glm::vec2(number(0, 1), number(0, 1)));
    if (chance(0.5)) {
      pose.yaw = number(-25, 25);
      pose.pitch = number(-12, 12);
      pose.roll = number(-4, 4);
    }
    if (chance(0.4)) pose.motionBlur = number(0.2, 1);
    return pose;
  }

  void editStyle() {
    switch (whole(0, 4)) {
      case 0:
        settings_.frameStyle.enabled = !settings_.frameStyle.enabled;
        break;
      case 1:
        settings_.frameStyle.cornerRadius = number(0, 0.1);
        break;
      case 2:
        settings_.rippleSettings.style =
            package::allRippleStyles.at(static_cast<std::size_t>(whole(0, 2)));
        break;
      case 3:
        settings_.pip.center = {number(0, 1), number(0, 1)};
        settings_.pip.shadow = number(0, 1);
        break;
      default:
        settings_.cursorSettings.scale = number(0.5, 3);
        break;
    }
  }

  media::VideoFrame randomCamera() {
    const glm::dvec3 color(number(0, 1), number(0, 1), number(0, 1));
    return test::makeRgbPicture(64, 36, [&](glm::dvec2 place) { return color * place.x / 64.0; });
  }

  std::mt19937 random_;
  CompositeSettings settings_;
  std::shared_ptr<const package::RecordingProject> project_;
  media::VideoFrame screen_;
  std::optional<media::VideoFrame> camera_;
  motion::CameraPose pose_;
  motion::CameraPose previousPose_;
  double time_ = 0;
};

class CompositeTargetTest : public gpu::test::GpuTest,
                            public ::testing::WithParamInterface<unsigned> {};

TEST_P(CompositeTargetTest, drawingWhatChangedEqualsDrawingEverything) {
  RandomShow show(GetParam());
  const auto renderer = take(PreviewRenderer::create(device()));
  renderer->loadForExport(show.project());
  auto kept = take(CompositeTarget::create(device(), width, height));
  auto fresh = take(CompositeTarget::create(device(), width, height));
  int partial = 0;
  int untouched = 0;
  constexpr int frames = 60;
  for (int frame = 0; frame < frames; ++frame) {
    renderer->settings = show.settings();
    const bool hasCamera = show.camera().has_value();
    const PictureChanges changes{.screen = take(renderer->showScreen(show.screen())),
                                 .camera = hasCamera && take(renderer->showCamera(*show.camera()))};
    const CompositePlan plan = renderer->plan(show.pose(), show.previousPose(), show.time(),
                                              renderer->contentRect(width, height), width, height);
    const CompositeDamage damage = kept.draw(*renderer, plan, changes, black, Redraw::changed);
    EXPECT_TRUE(fresh.draw(*renderer, plan, changes, black, Redraw::always).isEverything);
    ASSERT_EQ(test::canvasImage(kept.framebuffer()).pixels,
              test::canvasImage(fresh.framebuffer()).pixels)
        << "frame " << frame;
    partial += damage.isEverything || damage.isNothing() ? 0 : 1;
    untouched += damage.isNothing() ? 1 : 0;
    show.advance();
  }
  // Otherwise the comparison would say little.
  EXPECT_GT(partial, frames / 4);
  EXPECT_GT(untouched, 2);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CompositeTargetTest, ::testing::Range(1U, 9U));

class CompositeTargetRules : public gpu::test::GpuTest {};

TEST_F(CompositeTargetRules, theFirstCompositeIsDrawnWhole) {
  const auto renderer = take(PreviewRenderer::create(device()));
  auto target = take(CompositeTarget::create(device(), 64, 36));
  const CompositePlan plan = renderer->plan({}, {}, 0, {}, 64, 36);
  EXPECT_TRUE(target.draw(*renderer, plan, {}, black, Redraw::changed).isEverything);
  EXPECT_TRUE(target.draw(*renderer, plan, {}, black, Redraw::changed).isNothing());
  EXPECT_TRUE(target.draw(*renderer, plan, {}, black, Redraw::always).isEverything);
}

TEST_F(CompositeTargetRules, whereNothingIsDrawnTheClearColourStands) {
  const auto renderer = take(PreviewRenderer::create(device()));
  auto target = take(CompositeTarget::create(device(), 64, 36));
  target.draw(*renderer, renderer->plan({}, {}, 0, {}, 64, 36), {}, {1, 0, 0, 1}, Redraw::changed);
  EXPECT_EQ(test::canvasImage(target.framebuffer()).at(30, 20), glm::dvec4(1, 0, 0, 1));
}

TEST_F(CompositeTargetRules, aCanvasTooLargeIsRefused) {
  const int tooWide = device().capabilities().maxTextureSize + 1;
  EXPECT_FALSE(CompositeTarget::create(device(), tooWide, 36).has_value());
}

}  // namespace
}  // namespace vesk::compositor
