#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "export/ExportSettings.h"

namespace vesk::exporting {
namespace {

using Format = ExportSettings::Format;
using Resolution = ExportSettings::Resolution;
using Size = ExportSettings::Size;

Size outputSize(Resolution resolution, std::int64_t width, std::int64_t height) {
  return ExportSettings{.resolution = resolution}.outputSize(width, height);
}

TEST(ExportSettings, theDefaultIsAnMp4OfTheSourceSizeAtSixtyFrames) {
  const ExportSettings settings;
  EXPECT_EQ(settings.format, Format::mp4);
  EXPECT_EQ(settings.resolution, Resolution::source);
  EXPECT_EQ(settings.fps, 60);
  EXPECT_EQ(settings.bppCoefficient, 0.08);
}

TEST(ExportSettings, aLargerSourceIsScaledToTheTargetHeight) {
  EXPECT_EQ(outputSize(Resolution::p1080, 2560, 1600), (Size{1728, 1080}));
  EXPECT_EQ(outputSize(Resolution::p2160, 5120, 2880), (Size{3840, 2160}));
  EXPECT_EQ(outputSize(Resolution::p1440, 3840, 2160), (Size{2560, 1440}));
}

TEST(ExportSettings, aSourceOfTheTargetHeightKeepsItsSize) {
  EXPECT_EQ(outputSize(Resolution::p1080, 1920, 1080), (Size{1920, 1080}));
}

TEST(ExportSettings, aSourceIsNeverEnlarged) {
  EXPECT_EQ(outputSize(Resolution::p1080, 1440, 900), (Size{1440, 900}));
  EXPECT_EQ(outputSize(Resolution::p2160, 1921, 1081), (Size{1920, 1080}));
}

TEST(ExportSettings, theSourceSizeIsRoundedDownToEvenNumbers) {
  EXPECT_EQ(outputSize(Resolution::source, 1921, 1081), (Size{1920, 1080}));
  EXPECT_EQ(outputSize(Resolution::source, 1, 1), (Size{0, 0}));
}

TEST(ExportSettings, aScaledWidthIsRoundedAndThenMadeEven) {
  EXPECT_EQ(outputSize(Resolution::p720, 3024, 1964), (Size{1108, 720}));
  EXPECT_EQ(outputSize(Resolution::p720, 1443, 1440), (Size{722, 720})) << "721.5 rounds up";
}

TEST(ExportSettings, aSourceWithoutHeightKeepsItsWidth) {
  EXPECT_EQ(outputSize(Resolution::p1080, 1921, 0), (Size{1920, 0}));
  EXPECT_EQ(outputSize(Resolution::source, 1921, 0), (Size{1920, 0}));
}

TEST(ExportSettings, everyOutputIsEvenAndNoHigherThanItsSource) {
  for (const Resolution resolution : ExportSettings::allResolutions) {
    for (std::int64_t width = 1; width < 6000; width += 37) {
      for (std::int64_t height = 1; height < 4000; height += 41) {
        const Size size = outputSize(resolution, width, height);
        ASSERT_EQ(size.width % 2, 0) << width << "×" << height;
        ASSERT_EQ(size.height % 2, 0) << width << "×" << height;
        ASSERT_LE(size.height, height) << width << "×" << height;
        ASSERT_LE(size.width, width) << width << "×" << height;
      }
    }
  }
}

TEST(ExportSettings, theBitRateFollowsPixelsAndFrameRate) {
  const ExportSettings settings;
  EXPECT_EQ(settings.bitRate(1920, 1080), 9'953'280);
  EXPECT_EQ(settings.bitRate(2560, 1440), 17'694'720);
  EXPECT_EQ(ExportSettings{.fps = 30}.bitRate(1920, 1080), 4'976'640);
  EXPECT_EQ(ExportSettings{.format = Format::mov}.bitRate(1920, 1080), 9'953'280);
}

TEST(ExportSettings, theBitRateIsCutToAnInteger) {
  EXPECT_EQ(ExportSettings({.fps = 1, .bppCoefficient = 0.999}).bitRate(2, 1), 1);
}

TEST(ExportSettings, theBitRateOfAHugePictureDoesNotOverflow) {
  EXPECT_EQ(ExportSettings{.fps = 1000}.bitRate(32768, 32768), 85'899'345'920);
}

TEST(ExportSettings, theEstimateCountsTheBytesOfThePicture) {
  const ExportSettings settings;
  EXPECT_EQ(settings.estimatedBytes(1920, 1080, 10), 12'441'600);
  EXPECT_EQ(settings.estimatedBytes(1920, 1080, 0), 0);
  EXPECT_EQ(ExportSettings({.fps = 1, .bppCoefficient = 1}).estimatedBytes(2, 2, 1.9), 0)
      << "0.95 bytes are cut";
}

TEST(ExportSettings, theFormatsComeInOrderWithTheirLabels) {
  std::vector<std::string> labels;
  for (const Format format : ExportSettings::allFormats) labels.emplace_back(rawValue(format));
  EXPECT_EQ(labels, (std::vector<std::string>{"MP4", "MOV"}));
}

TEST(ExportSettings, theFormatsHaveTheirHelpLines) {
  EXPECT_EQ(helpLine(Format::mp4), "H.264 · 兼容性最好，随处可播");
  EXPECT_EQ(helpLine(Format::mov), "HEVC · 同画质体积约小 40%");
}

TEST(ExportSettings, theResolutionsComeInOrderWithTheirLabels) {
  std::vector<std::string> labels;
  for (const Resolution each : ExportSettings::allResolutions) labels.emplace_back(rawValue(each));
  EXPECT_EQ(labels, (std::vector<std::string>{"原始", "4K", "1440p", "1080p", "720p"}));
}

TEST(ExportSettings, thePanelOffersSixtyAndThirtyFrames) {
  EXPECT_EQ(ExportSettings::offeredRates, (std::array{60, 30}));
}

TEST(ExportSettings, rawValuesLeadBackToTheirCases) {
  for (const Format format : ExportSettings::allFormats) {
    EXPECT_EQ(exportFormat(rawValue(format)), format);
  }
  for (const Resolution resolution : ExportSettings::allResolutions) {
    EXPECT_EQ(exportResolution(rawValue(resolution)), resolution);
  }
}

TEST(ExportSettings, anUnknownRawValueGivesNoCase) {
  for (const char* raw : {"", "4k", "1080", "480p", "source", "mp4", " MP4"}) {
    EXPECT_FALSE(exportResolution(raw)) << raw;
    EXPECT_FALSE(exportFormat(raw)) << raw;
  }
}

}  // namespace
}  // namespace vesk::exporting
