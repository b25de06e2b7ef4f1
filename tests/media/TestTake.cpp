#include "media/TestTake.h"

#include <algorithm>
#include <numbers>
#include <random>
#include <utility>

#include "media/StereoSample.h"
#include "media/TestMovie.h"

namespace vesk::media {

CaptureSettings takeSettings(std::string_view encoder, int soundChannels) {
  CaptureSettings settings;
  settings.pictures = {.width = takeWidth, .height = takeHeight, .fps = 30, .bitRate = 300'000};
  settings.encoder = captureEncoderNamed(encoder).value();
  if (soundChannels > 0) {
    settings.sound = {.channels = soundChannels, .bitRate = 128'000};
  }
  return settings;
}

std::shared_ptr<const I420Picture> flatPicture(int index, int width, int height) {
  auto picture = std::make_shared<I420Picture>(width, height);
  const auto& luma = picture->planes()[0];
  std::fill_n(luma.data, luma.stride * luma.height, static_cast<std::uint8_t>(shadeOf(index)));
  return picture;
}

std::shared_ptr<const I420Picture> roughPicture(int index, int width, int height) {
  auto picture = std::make_shared<I420Picture>(width, height);
  const auto& luma = picture->planes()[0];
  std::mt19937 random(static_cast<std::mt19937::result_type>(index));
  std::generate_n(luma.data, luma.stride * luma.height,
                  [&] { return static_cast<std::uint8_t>(16 + random() % 220); });
  return picture;
}

TestSoundSource::TestSoundSource(int channels, Wave wave, double partsPerMillionFast)
    : channels_(channels),
      wave_(std::move(wave)),
      rate_(soundRate * (1 + partsPerMillionFast / 1'000'000)),
      samples_(static_cast<std::size_t>(blockLength * channels)) {}

SoundBlock TestSoundSource::next() {
  for (int i = 0; i < blockLength; ++i) {
    const double time = static_cast<double>(position_ + i) / rate_;
    std::fill_n(samples_.begin() + std::ptrdiff_t{i} * channels_, channels_,
                wave_ ? wave_(time) : 0.25F);
  }
  const SoundBlock block{takeTime(time()), position_, samples_};
  position_ += blockLength;
  return block;
}

TestSoundSource::Wave beepAt(double start) {
  return [start](double time) {
    const bool isOn = time >= start && time < start + 0.1;
    return isOn ? static_cast<float>(0.25 * std::sin(2000 * std::numbers::pi * time)) : 0.0F;
  };
}

}  // namespace vesk::media
