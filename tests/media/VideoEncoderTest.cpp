#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/VideoEncoder.h"

namespace vesk::media {
namespace {

TEST(VideoEncoder, anEncoderThatThisMachineLacksIsNamed) {
  EncoderChoice choice = encoderFor(Container::mp4);
  choice.encoder = "libmissing";
  const VideoSettings settings{.width = 320, .height = 180, .bitRate = 1'000'000};
  const auto encoder = openEncoder(choice, settings, true);
  ASSERT_FALSE(encoder);
  EXPECT_EQ(encoder.error(),
            (MediaError{MediaError::Kind::unsupported,
                        "本机的 FFmpeg 没有编码器 libmissing，不能导出 MP4（H.264）"}));
}

}  // namespace
}  // namespace vesk::media
