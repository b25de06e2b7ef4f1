#include <algorithm>
#include <cstdlib>
#include <random>

#include "compositor/CompositeScenes.h"
#include "compositor/CompositeTarget.h"
#include "compositor/PictureDownload.h"
#include "compositor/PreviewRenderer.h"
#include "compositor/TestPicture.h"
#include "gpu/GpuTest.h"

namespace vesk::compositor {
namespace {

using Conversion = PictureDownload::Conversion;
using Picture = std::shared_ptr<const media::I420Picture>;

constexpr CompositeDamage everything{.isEverything = true};

std::vector<int> samples(const media::I420Picture& picture) {
  std::vector<int> values;
  for (const media::I420Picture::Plane& plane : picture.planes()) {
    for (int y = 0; y < plane.height; ++y) {
      for (int x = 0; x < plane.width; ++x) values.push_back(plane.data[y * plane.stride + x]);
    }
  }
  return values;
}

/// A canvas that shows a picture pixel for pixel.
class PictureDownloadTest : public gpu::test::GpuTest {
 protected:
  static constexpr int width = 96;
  static constexpr int height = 64;

  void SetUp() override {
    GpuTest::SetUp();
    renderer_ = take(PreviewRenderer::create(device()));
    renderer_->settings.cursorSettings.visible = false;
    target_.emplace(take(CompositeTarget::create(device(), width, height)));
    show(noise(1));
  }
  void TearDown() override {
    target_.reset();
    renderer_.reset();
    GpuTest::TearDown();
  }

  static media::VideoFrame noise(unsigned seed) {
    std::mt19937 random(seed);
    return test::makeRgbPicture(width, height, [&](glm::dvec2) {
      return glm::dvec3(random() % 256, random() % 256, random() % 256) / 255.0;
    });
  }

  CompositeDamage show(const media::VideoFrame& frame) {
    const gpu::PixelRect changed = take(renderer_->showScreen(frame));
    const CompositePlan plan = renderer_->plan({}, {}, 0, {}, width, height);
    return target_->draw(*renderer_, plan, {.screen = changed}, glm::vec4(0, 0, 0, 1),
                         CompositeTarget::Redraw::changed);
  }

  PictureDownload download(Conversion conversion) const {
    return take(PictureDownload::create(device(), width, height, conversion));
  }
  Picture fetch(PictureDownload& from, const CompositeDamage& damage) {
    return from.download(target_->texture(), target_->framebuffer(), damage,
                         renderer_->uniformBuffers());
  }
  test::DoubleImage canvas() const { return test::canvasImage(target_->framebuffer()); }

 private:
  std::unique_ptr<PreviewRenderer> renderer_;
  std::optional<CompositeTarget> target_;
};

class EachConversion : public PictureDownloadTest,
                       public ::testing::WithParamInterface<Conversion> {};
INSTANTIATE_TEST_SUITE_P(Conversions, EachConversion,
                         ::testing::Values(Conversion::onProcessor, Conversion::onGraphics));

TEST_P(EachConversion, followsTheEquationsOfBt709LimitedRange) {
  PictureDownload from = download(GetParam());
  const Picture picture = fetch(from, everything);
  const test::DoubleImage colours = canvas();
  const auto luma = [](const glm::dvec4& c) { return 0.2126 * c.r + 0.7152 * c.g + 0.0722 * c.b; };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const media::I420Picture::Plane& plane = picture->planes()[0];
      ASSERT_NEAR(plane.data[y * plane.stride + x], 16 + 219 * luma(colours.at(x, y)), 0.6);
    }
  }
  for (int y = 0; y < height / 2; ++y) {
    for (int x = 0; x < width / 2; ++x) {
      const glm::dvec4 mean = (colours.at(2 * x, 2 * y) + colours.at(2 * x + 1, 2 * y) +
                               colours.at(2 * x, 2 * y + 1) + colours.at(2 * x + 1, 2 * y + 1)) /
                              4.0;
      const media::I420Picture::Plane& blue = picture->planes()[1];
      const media::I420Picture::Plane& red = picture->planes()[2];
      ASSERT_NEAR(blue.data[y * blue.stride + x], 128 + 224 * (mean.b - luma(mean)) / 1.8556, 0.6);
      ASSERT_NEAR(red.data[y * red.stride + x], 128 + 224 * (mean.r - luma(mean)) / 1.5748, 0.6);
    }
  }
}

TEST_P(EachConversion, fetchingWhatChangedGivesThePictureFetchedWhole) {
  std::mt19937 random(3);
  PictureDownload kept = download(GetParam());
  fetch(kept, everything);
  media::VideoFrame frame = noise(1);
  for (int round = 0; round < 10; ++round) {
    const auto left = static_cast<int>(random() % 80);
    const auto top = static_cast<int>(random() % 50);
    frame = test::withSamples(frame, [&](int, int x, int y) {
      return x >= left && x < left + 7 && y >= top && y < top + 5 ? 40 + 10 * round : -1;
    });
    const CompositeDamage damage = show(frame);
    EXPECT_FALSE(damage.isEverything);
    const Picture part = fetch(kept, damage);
    PictureDownload fresh = download(GetParam());
    ASSERT_EQ(samples(*part), samples(*fetch(fresh, everything)));
  }
}

TEST_P(EachConversion, oddRectanglesAreWidenedToWholeChromaSamples) {
  PictureDownload from = download(GetParam());
  fetch(from, everything);
  const CompositeDamage shown = show(noise(2));
  ASSERT_TRUE(shown.isEverything);
  // Says that everything changed, by odd parts that cover the canvas together.
  const CompositeDamage parts{.rects = {{0, 0, 33, 31},
                                        {33, 0, width - 33, 31},
                                        {0, 31, 33, height - 31},
                                        {33, 31, width - 33, height - 31}}};
  const Picture picture = fetch(from, parts);
  PictureDownload fresh = download(GetParam());
  EXPECT_EQ(samples(*picture), samples(*fetch(fresh, everything)));
}

TEST_P(EachConversion, withoutDamageTheSamePictureComesAgain) {
  PictureDownload from = download(GetParam());
  const Picture first = fetch(from, everything);
  EXPECT_EQ(fetch(from, {}), first);
}

TEST_P(EachConversion, theFirstPictureIsWholeWhateverTheDamage) {
  PictureDownload from = download(GetParam());
  PictureDownload other = download(GetParam());
  EXPECT_EQ(samples(*fetch(from, {})), samples(*fetch(other, everything)));
}

TEST_P(EachConversion, whatWasGivenOutStaysAsItIs) {
  PictureDownload from = download(GetParam());
  std::vector<Picture> pictures;
  std::vector<std::vector<int>> contents;
  for (unsigned round = 1; round <= 5; ++round) {
    pictures.push_back(fetch(from, show(noise(round + 10))));
    contents.push_back(samples(*pictures.back()));
  }
  for (std::size_t index = 0; index < pictures.size(); ++index) {
    EXPECT_EQ(samples(*pictures[index]), contents[index]);
  }
}

TEST_F(PictureDownloadTest, bothWaysAgreeToOneLevel) {
  PictureDownload processor = download(Conversion::onProcessor);
  PictureDownload graphics = download(Conversion::onGraphics);
  for (unsigned round = 1; round <= 3; ++round) {
    show(noise(round));
    const std::vector<int> a = samples(*fetch(processor, everything));
    const std::vector<int> b = samples(*fetch(graphics, everything));
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t index = 0; index < a.size(); ++index) {
      ASSERT_LE(std::abs(a[index] - b[index]), 1);
    }
  }
}

TEST_F(PictureDownloadTest, aSoftwareRendererLeavesTheConversionToTheProcessor) {
  EXPECT_EQ(PictureDownload::preferredConversion(device()) == Conversion::onProcessor,
            device().capabilities().isSoftware);
}

TEST_F(PictureDownloadTest, aCanvasTooLargeIsRefused) {
  const int tooWide = 2 * (device().capabilities().maxTextureSize + 2);
  EXPECT_FALSE(PictureDownload::create(device(), tooWide, 2, Conversion::onGraphics).has_value());
}

}  // namespace
}  // namespace vesk::compositor
