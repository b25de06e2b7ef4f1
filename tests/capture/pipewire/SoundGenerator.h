#pragma once

#include <functional>
#include <memory>
#include <string>

#include "capture/pipewire/Moments.h"
#include "media/HostTime.h"
#include "media/pipewire/Connection.h"

namespace vesk::capture::pipewire::test {

/// What is heard at a time: −1…1.
using Waveform = std::function<float(media::HostTime)>;

/// A sine at half of full scale.
Waveform tone(double frequency);
/// Rises from 0 to just under 1 within each second of the clock, so that every sample tells when it
/// was made.
Waveform secondRamp();
/// A tone at the given moments.
Waveform beeps(double frequency, Moments moments);

/// Makes sound: as a program that plays, or as a microphone. It goes with the object.
class SoundGenerator {
 public:
  struct Microphone {
    std::string name;
    std::string description;
  };
  struct Player {
    std::string sinkName;  ///< empty for the default sink
  };

  SoundGenerator(const std::string& remote, const Microphone& microphone, Waveform waveform);
  SoundGenerator(const std::string& remote, const Player& player, Waveform waveform);
  SoundGenerator(const SoundGenerator&) = delete;
  SoundGenerator& operator=(const SoundGenerator&) = delete;
  ~SoundGenerator();

 private:
  class Stream;
  std::unique_ptr<media::pipewire::Connection> connection_;
  std::unique_ptr<Stream> stream_;
};

}  // namespace vesk::capture::pipewire::test
