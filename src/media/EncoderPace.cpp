#include "media/EncoderPace.h"

#include <chrono>
#include <vector>

#include "media/I420Picture.h"
#include "media/PictureEncoder.h"
#include "media/ScrollingText.h"

namespace vesk::media {
namespace {

constexpr double longestProbe = 1;     ///< s
constexpr double shortestProbe = 0.2;  ///< s of pictures as they come
constexpr double clearly = 2;

using Clock = std::chrono::steady_clock;

}  // namespace

PaceVerdict judge(const EncoderPace& pace, int fps) {
  if (!pace.works) {
    return PaceVerdict::fails;
  }
  const double available = static_cast<double>(pace.pictures) / fps;
  const double needed = pace.seconds * paceMargin;
  if (available >= 1 || pace.seconds >= longestProbe) {
    return needed <= available ? PaceVerdict::holds : PaceVerdict::fails;
  }
  if (available < shortestProbe) {
    return PaceVerdict::unsure;
  }
  if (needed * clearly <= available) {
    return PaceVerdict::holds;
  }
  return needed >= available * clearly ? PaceVerdict::fails : PaceVerdict::unsure;
}

EncoderPace measurePace(const CaptureEncoder& encoder, const PictureTrackSettings& settings) {
  auto opened = PictureEncoder::open(encoder, settings);
  if (!opened) {
    return {};
  }
  ScrollingText text(settings.width, settings.height);
  I420Picture picture(settings.width, settings.height);
  const auto encodeNext = [&](int index) {
    text.drawNext(picture);
    std::vector<PacketPtr> packets;
    const std::int64_t time = std::int64_t{index} * pictureTicks / settings.fps;
    const Clock::time_point start = Clock::now();
    const int status = opened->encode(picture, time, index == 0, packets);
    return EncoderPace{.works = status >= 0 && packets.size() == 1,
                       .pictures = 1,
                       .seconds = std::chrono::duration<double>(Clock::now() - start).count()};
  };
  // Starting up its threads takes an encoder longer than a picture.
  EncoderPace pace{.works = encodeNext(0).works};
  for (int index = 1; judge(pace, settings.fps) == PaceVerdict::unsure; ++index) {
    const EncoderPace next = encodeNext(index);
    pace = {next.works, pace.pictures + 1, pace.seconds + next.seconds};
  }
  return pace;
}

}  // namespace vesk::media
