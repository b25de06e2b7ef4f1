#include <epoxy/gl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include "compositor/PictureDownload.h"
#include "editor/PreviewPainter.h"
#include "editor/SessionStage.h"
#include "export/ExportStage.h"
#include "export/RenderLoop.h"
#include "gpu/PixelRect.h"

namespace vesk::editor::test {
namespace {

using exporting::ExportStage;
using Picture = std::shared_ptr<const media::I420Picture>;

constexpr int width = 640;
constexpr int height = 360;
constexpr std::int64_t framesPerSecond = 60;
constexpr int instants = 30;

class PreviewPainterTest : public ExportStage {
 protected:
  PreviewPainterTest() : painter_(*PreviewPainter::create(device())) {}

  /// A session with a copy of a take, which it may write into.
  std::unique_ptr<PreviewController> open(const std::filesystem::path& take) {
    const auto copy = sessions_.library() / take.filename();
    std::filesystem::copy(take, copy, std::filesystem::copy_options::recursive);
    auto session = sessions_.makeSession();
    session->open(copy);
    return session;
  }

  /// The frame that the preview shows at a time, as planes like those of an export.
  Picture preview(PreviewController& session, double time) {
    session.seek(time);
    session.player()->waitForPictures(time);
    return shown(session);
  }

  /// The frame that it shows now, whatever has been decoded.
  Picture shown(const PreviewController& session) {
    painter_->take(session, width, height);
    const gpu::Texture& canvas = *painter_->fitTexture();
    painter_->draw();
    auto download = compositor::PictureDownload::create(
        device(), width, height, compositor::PictureDownload::Conversion::onProcessor);
    return download->download(canvas, *painter_->framebuffer(), {.isEverything = true}, uniforms_);
  }

  /// The frames of an export before they are encoded, those of the given numbers.
  std::map<std::int64_t, Picture> exported(const PreviewController& session,
                                           const std::vector<std::int64_t>& frames) {
    const auto renderer = makeRenderer(*session.project(), session.look());
    exporting::RenderLoop loop(device(), *renderer, compositor::CompositeTarget::Redraw::changed,
                               compositor::PictureDownload::Conversion::onProcessor);
    exporting::SourceFrames source(exporting::picturesFrom(session.project()->screenURL()));
    std::map<std::int64_t, Picture> kept;
    std::int64_t number = 0;
    const std::atomic<bool> cancelled = false;
    const auto outcome = loop.run(
        {.width = width, .height = height, .fps = framesPerSecond, .frames = frames.back() + 1},
        source,
        [&](Picture picture) {
          if (std::ranges::binary_search(frames, number)) kept[number] = std::move(picture);
          ++number;
          return true;
        },
        [](double) {}, cancelled);
    EXPECT_TRUE(outcome);
    return kept;
  }

  Sessions sessions_;
  std::unique_ptr<PreviewPainter> painter_;
  gpu::UniformBuffers uniforms_;
};

/// Whether it came true within ten seconds.
template <typename Condition>
bool until(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// The largest difference of any sample outside an area.
int difference(const media::I420Picture& left, const media::I420Picture& right,
               const gpu::PixelRect& except) {
  int largest = 0;
  for (std::size_t index = 0; index < left.planes().size(); ++index) {
    const auto& a = left.planes()[index];
    const auto& b = right.planes()[index];
    const int scale = index == 0 ? 1 : 2;
    for (int y = 0; y < a.height; ++y) {
      for (int x = 0; x < a.width; ++x) {
        const bool isExcepted = x * scale >= except.x && x * scale < except.right() &&
                                y * scale >= except.y && y * scale < except.bottom();
        if (isExcepted) continue;
        largest = std::max(largest, std::abs(a.data[y * a.stride + x] - b.data[y * b.stride + x]));
      }
    }
  }
  return largest;
}

void enableCamera(PreviewController& session, bool isEnabled) {
  session.changeLook([&](compositor::CompositeSettings& look) { look.pip.enabled = isEnabled; });
}

TEST_F(PreviewPainterTest, aCameraThatIsNotShownIsNotDecoded) {
  const auto session = open(VESK_SAMPLE_TAKE);
  enableCamera(*session, false);
  const media::PictureFeed& camera = *session->syncedPlayers().front().pictures;
  session->play();
  sessions_.hostTime += Player::startDelay;
  for (int step = 0; step < 90; ++step) {
    session->tick();
    sessions_.sound.heardSeconds = 0.1 * step;
    shown(*session);
  }
  ASSERT_GT(session->currentTime(), 8);
  EXPECT_LT(camera.decodedPictures(), 20) << "but for the first ones";
}

TEST_F(PreviewPainterTest, aCameraThatIsTurnedOnWhilePausedIsThereAtOnce) {
  const auto session = open(VESK_SAMPLE_TAKE);
  const Picture expected = preview(*session, 6);
  enableCamera(*session, false);
  preview(*session, 3);
  const Picture without = preview(*session, 6);
  EXPECT_GT(difference(*without, *expected, {}), 0);
  enableCamera(*session, true);
  EXPECT_EQ(difference(*shown(*session), *expected, {}), 0);
}

TEST_F(PreviewPainterTest, aCameraThatIsTurnedOnShowsThePictureOfTheTimePlayedTo) {
  const auto session = open(VESK_SAMPLE_TAKE);
  const Picture expected = preview(*session, 6);
  preview(*session, 2);
  enableCamera(*session, false);
  session->play();
  sessions_.hostTime += Player::startDelay;
  session->tick();
  sessions_.sound.heardSeconds = 4;
  session->tick();
  session->pause();
  ASSERT_EQ(session->currentTime(), 6);
  enableCamera(*session, true);
  shown(*session);  // asks for it
  ASSERT_TRUE(until([&] { return session->player()->hasExactPictures(6); }));
  EXPECT_EQ(difference(*shown(*session), *expected, {}), 0);
}

/// While this lives the driver says that it has no memory.
class NoGraphicsMemory {
 public:
  NoGraphicsMemory() {
    epoxy_glGetError = [] { return static_cast<GLenum>(GL_OUT_OF_MEMORY); };
  }
  NoGraphicsMemory(const NoGraphicsMemory&) = delete;
  NoGraphicsMemory& operator=(const NoGraphicsMemory&) = delete;
  ~NoGraphicsMemory() { epoxy_glGetError = driver_; }

 private:
  decltype(epoxy_glGetError) driver_ = epoxy_glGetError;
};

TEST_F(PreviewPainterTest, withoutTheMemoryForASizeNothingIsDrawn) {
  const auto session = open(VESK_SAMPLE_TAKE);
  const Picture before = preview(*session, 2);
  painter_->take(*session, width / 2, height / 2);
  {
    const NoGraphicsMemory none;
    EXPECT_EQ(painter_->fitTexture(), nullptr);
  }
  painter_->draw();
  EXPECT_EQ(painter_->framebuffer(), nullptr) << "nobody would show it";
  EXPECT_TRUE(painter_->isStale());
  EXPECT_EQ(difference(*preview(*session, 2), *before, {}), 0);
}

TEST_F(PreviewPainterTest, anotherSizeBringsAnotherTexture) {
  const auto session = open(VESK_SAMPLE_TAKE);
  painter_->take(*session, width, height);
  const unsigned int first = painter_->fitTexture()->handle();
  EXPECT_EQ(painter_->fitTexture()->handle(), first);
  painter_->take(*session, width / 2, height / 2);
  EXPECT_NE(painter_->fitTexture()->handle(), first);
  EXPECT_EQ(painter_->fitTexture()->width(), width / 2);
}

struct Take {
  std::string name;
  std::filesystem::path path;
  bool showsCamera = false;
  bool isFramed = false;
};

class PreviewAndExportTest : public PreviewPainterTest, public testing::WithParamInterface<Take> {};

// What may differ is the time of the camera's picture, which the preview takes from the pictures
// that have been and the export from those that come, and the blur, which a still preview has not.
TEST_P(PreviewAndExportTest, showTheSame) {
  const Take& take = GetParam();
  const auto session = open(take.path);
  ASSERT_TRUE(session->hasProject());
  session->changeLook([&](compositor::CompositeSettings& look) {
    look.motionBlurEnabled = false;
    look.pip.enabled = take.showsCamera;
    look.frameStyle.enabled = take.isFramed;
  });
  const auto last =
      static_cast<std::int64_t>(session->duration() * static_cast<double>(framesPerSecond)) - 1;
  std::vector<std::int64_t> frames;
  for (std::int64_t index = 0; index < instants; ++index) {
    frames.push_back(last * index / (instants - 1));
  }
  const auto expected = exported(*session, frames);
  const package::PiPSettings& pip = session->look().pip;
  constexpr double margin = 1.1;  // of the soft edge
  const int side = static_cast<int>(pip.size * height * margin);
  const gpu::PixelRect window =
      take.showsCamera
          ? gpu::PixelRect{static_cast<int>(pip.center.x * width) - side / 2,
                           static_cast<int>(pip.center.y * height) - side / 2, side, side}
          : gpu::PixelRect{};
  ASSERT_EQ(expected.size(), static_cast<std::size_t>(instants));
  // In no order, as a user jumps about.
  for (std::size_t step = 0; step < frames.size(); ++step) {
    const std::int64_t frame = frames[step * 7 % frames.size()];
    const Picture shown = preview(*session, static_cast<double>(frame) / framesPerSecond);
    EXPECT_EQ(difference(*shown, *expected.at(frame), window), 0) << "frame " << frame;
  }
}

INSTANTIATE_TEST_SUITE_P(
    PreviewPainter, PreviewAndExportTest,
    testing::Values(Take{.name = "tour", .path = VESK_SAMPLE_TAKE},
                    Take{.name = "tourWithCamera", .path = VESK_SAMPLE_TAKE, .showsCamera = true},
                    Take{.name = "marks", .path = VESK_MARKS_TAKE},
                    Take{.name = "marksFramed", .path = VESK_MARKS_TAKE, .isFramed = true}),
    [](const auto& chosen) { return chosen.param.name; });

}  // namespace
}  // namespace vesk::editor::test
