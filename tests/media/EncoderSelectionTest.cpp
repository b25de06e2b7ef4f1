#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "media/EncoderMemory.h"
#include "media/EncoderSelection.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr int fps = 60;
constexpr PictureTrackSettings smallTake{
    .width = 320, .height = 180, .fps = 30, .bitRate = 500'000};

/// Those with a time of their own work, in milliseconds a picture.
EncoderSelection selectWith(const std::map<std::string_view, double>& times) {
  return selectEncoder(captureEncoders(), fps, [&](const CaptureEncoder& encoder) {
    const auto found = times.find(encoder.name);
    return found == times.end()
               ? EncoderPace()
               : EncoderPace{.works = true, .pictures = fps, .seconds = found->second * fps / 1000};
  });
}

std::string_view nameWith(const std::map<std::string_view, double>& times) {
  return selectWith(times).encoder.name;
}

TEST(EncoderSelection, prefersHevcInHardwareThenOnTheProcessorThenH264) {
  std::vector<std::string_view> names;
  for (const CaptureEncoder& encoder : captureEncoders()) {
    names.push_back(encoder.name);
    EXPECT_EQ(captureEncoderNamed(encoder.name)->encoder, encoder.encoder);
  }
  EXPECT_THAT(names,
              ElementsAre("hevc_vaapi", "hevc_nvenc", "hevc_qsv", "libx265", "h264_vaapi",
                          "h264_nvenc", "h264_qsv", "libx264-superfast", "libx264-ultrafast"));
  EXPECT_EQ(captureEncoderNamed("none"), std::nullopt);
}

TEST(EncoderSelection, takesTheFirstThatHoldsTheRate) {
  EXPECT_EQ(nameWith({{"hevc_nvenc", 2}, {"libx265", 5}, {"h264_nvenc", 1}}), "hevc_nvenc");
  EXPECT_EQ(nameWith({{"libx265", 11}, {"libx264-superfast", 3}}), "libx265");
  EXPECT_EQ(nameWith({{"libx265", 12}, {"libx264-superfast", 3}}), "libx264-superfast");
  EXPECT_EQ(nameWith({{"libx265", 12}, {"h264_vaapi", 2}, {"libx264-superfast", 3}}), "h264_vaapi");
}

TEST(EncoderSelection, takesThePlainestWhereNoneHolds) {
  EXPECT_EQ(nameWith({}), plainestCaptureEncoder().name);
  EXPECT_EQ(nameWith({{"libx265", 30}, {"libx264-superfast", 20}}), "libx264-ultrafast");
}

TEST(EncoderSelection, triesNoFurtherThanNeeded) {
  EXPECT_EQ(selectWith({{"hevc_vaapi", 1}}).trials.size(), 1U);
}

TEST(EncoderSelection, saysWhatWasTried) {
  const auto selection = selectWith({{"libx265", 20}, {"h264_vaapi", 2}});
  const std::string text = describe(selection, fps);
  EXPECT_THAT(text, HasSubstr("hevc_vaapi does not work here; "));
  EXPECT_THAT(text, HasSubstr("libx265 took 20.0 ms for each of 60 pictures and is too slow for"));
  EXPECT_THAT(text, HasSubstr("h264_vaapi took 2.0 ms for each of 60 pictures and holds 60 fps"));
}

class EncoderMemoryTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  fs::path memory = folder / "state" / "encoders.json";
};

TEST_F(EncoderMemoryTest, remembersBySituation) {
  EXPECT_EQ(rememberedEncoder(memory, "a"), "");
  ASSERT_TRUE(rememberEncoder(memory, "a", "libx265"));
  ASSERT_TRUE(rememberEncoder(memory, "b", "h264_qsv"));
  ASSERT_TRUE(rememberEncoder(memory, "a", "libx264-superfast"));
  EXPECT_EQ(rememberedEncoder(memory, "a"), "libx264-superfast");
  EXPECT_EQ(rememberedEncoder(memory, "b"), "h264_qsv");
  EXPECT_EQ(rememberedEncoder(memory, "c"), "");
}

TEST_F(EncoderMemoryTest, aDamagedFileTellsNothingAndIsReplaced) {
  fs::create_directories(memory.parent_path());
  for (const char* damaged : {"", "{", "[1]", R"({"a":5})", "\xff\xfe"}) {
    writeBytes(memory, damaged);
    EXPECT_EQ(rememberedEncoder(memory, "a"), "") << damaged;
    ASSERT_TRUE(rememberEncoder(memory, "a", "libx265"));
    EXPECT_EQ(rememberedEncoder(memory, "a"), "libx265") << damaged;
  }
}

TEST_F(EncoderMemoryTest, aSituationIsThatOfASizeAndARate) {
  PictureTrackSettings settings = smallTake;
  const std::string situation = encodingSituation(settings);
  EXPECT_EQ(encodingSituation(settings), situation);
  settings.bitRate *= 2;
  EXPECT_EQ(encodingSituation(settings), situation);
  settings.fps = 60;
  EXPECT_NE(encodingSituation(settings), situation);
  settings = smallTake;
  settings.width += 2;
  EXPECT_NE(encodingSituation(settings), situation);
}

TEST_F(EncoderMemoryTest, whatWasChosenOnceIsNotMeasuredAgain) {
  ASSERT_TRUE(rememberEncoder(memory, encodingSituation(smallTake), "libx264-ultrafast"));
  EXPECT_EQ(encoderOfThisMachine(smallTake, memory).name, "libx264-ultrafast");
}

TEST_F(EncoderMemoryTest, aRememberedEncoderThatIsUnknownIsChosenAnew) {
  ASSERT_TRUE(rememberEncoder(memory, encodingSituation(smallTake), "none"));
  const CaptureEncoder chosen = encoderOfThisMachine(smallTake, memory);
  EXPECT_EQ(rememberedEncoder(memory, encodingSituation(smallTake)), chosen.name);
}

TEST_F(EncoderMemoryTest, aMemoryThatCannotBeWrittenIsDoneWithout) {
  writeBytes(folder / "state", "a file where the folder should be");
  EXPECT_TRUE(captureEncoderNamed(encoderOfThisMachine(smallTake, memory).name));
}

}  // namespace
}  // namespace vesk::media
