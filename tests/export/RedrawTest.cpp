#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "export/ExportStage.h"
#include "export/RenderLoop.h"

// Drawing only what changes must give the pictures that drawing everything gives, on real takes.
namespace vesk::exporting {
namespace {

using compositor::PictureDownload;
using Redraw = compositor::CompositeTarget::Redraw;

struct Passage {
  std::string name;
  const char* take;
  Look look;
  double start;  ///< seconds into the take
  std::int64_t frames;
  int width;
  int height;
  PictureDownload::Conversion conversion = PictureDownload::Conversion::onProcessor;
};

void PrintTo(const Passage& passage, std::ostream* out) {
  *out << passage.name;
}

class Redrawing : public ExportStage, public testing::WithParamInterface<Passage> {
 protected:
  struct Rendering {
    ExportStatistics statistics;
    std::vector<std::size_t> pictures;
  };

  Rendering render(Redraw redraw) {
    const Passage& passage = GetParam();
    const package::RecordingProject project = startingAt(loadTake(passage.take), passage.start);
    const auto renderer = makeRenderer(project, settingsFor(project, passage.look));
    RenderLoop loop(device(), *renderer, redraw, passage.conversion);
    SourceFrames source(picturesFrom(project.screenURL(), passage.start));
    Rendering rendering;
    const auto statistics = loop.run(
        {.width = passage.width, .height = passage.height, .fps = 60, .frames = passage.frames},
        source,
        [&](const auto& picture) {
          rendering.pictures.push_back(fingerprint(*picture));
          return true;
        },
        [](double) {}, neverCancelled_);
    if (!statistics) throw std::runtime_error(statistics.error().description());
    rendering.statistics = *statistics;
    return rendering;
  }

 private:
  std::atomic<bool> neverCancelled_ = false;
};

TEST_P(Redrawing, whatChangedOrEverythingGivesTheSamePictures) {
  const Rendering everything = render(Redraw::always);
  const Rendering changed = render(Redraw::changed);
  ASSERT_EQ(everything.statistics.frames, GetParam().frames);
  EXPECT_EQ(everything.statistics.fullyRedrawn, GetParam().frames);
  ASSERT_EQ(changed.pictures.size(), everything.pictures.size());
  for (std::size_t index = 0; index < everything.pictures.size(); ++index) {
    ASSERT_EQ(changed.pictures[index], everything.pictures[index]) << "frame " << index;
  }
  EXPECT_LT(changed.statistics.fullyRedrawn, GetParam().frames) << "nothing was saved";
}

constexpr auto* tour = VESK_SAMPLE_TAKE;
constexpr auto* marks = VESK_MARKS_TAKE;
constexpr Look flat{};
constexpr Look flatFramed{.framed = true};
constexpr Look withShadow{.cameraShadow = 0.6};
constexpr Look perspective{.perspective = true};
constexpr Look perspectiveFramed{.perspective = true, .framed = true};
constexpr auto onGraphics = PictureDownload::Conversion::onGraphics;

INSTANTIATE_TEST_SUITE_P(
    WholeTakes, Redrawing,
    testing::Values(Passage{"tourFlat", tour, flat, 0, 600, 480, 270},
                    Passage{"tourFramedInPerspective", tour, perspectiveFramed, 0, 600, 480, 270},
                    Passage{"marksFramed", marks, flatFramed, 0, 360, 640, 360},
                    Passage{"marksInPerspective", marks, perspective, 0, 360, 640, 360}),
    [](const auto& each) { return each.param.name; });

INSTANTIATE_TEST_SUITE_P(InFullSize, Redrawing,
                         testing::Values(Passage{"tourFlat", tour, flat, 3, 75, 1920, 1080},
                                         Passage{"tourCameraWithShadow", tour, withShadow, 1, 60,
                                                 1920, 1080},
                                         Passage{"tourFramed", tour, flatFramed, 6, 60, 1920, 1080},
                                         Passage{"marksFlat", marks, flat, 1.5, 60, 2560, 1440},
                                         Passage{"tourInPerspectiveConvertedOnGraphics", tour,
                                                 perspective, 3, 40, 1920, 1080, onGraphics}),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace vesk::exporting
