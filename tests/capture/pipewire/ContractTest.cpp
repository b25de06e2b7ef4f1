#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>

#include "capture/contract/CameraSourceContract.h"
#include "capture/contract/SoundSourceContract.h"
#include "capture/pipewire/Microphone.h"
#include "capture/pipewire/PipeWireCamera.h"
#include "capture/pipewire/SoundGenerator.h"
#include "capture/pipewire/SystemSound.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/pipewire/VirtualCamera.h"
#include "capture/pipewire/VirtualSink.h"
#include "capture/x11/Eventually.h"

namespace vesk::capture::contract {
namespace {

using pipewire::test::SoundGenerator;
using pipewire::test::TestSoundServer;
using pipewire::test::VirtualCamera;
using pipewire::test::VirtualSink;
using x11::test::eventually;

/// A tone whose frequency is set from outside; silence at 0.
class Tone {
 public:
  void set(double frequency) { frequency_ = frequency; }
  pipewire::test::Waveform waveform() {
    return [this](media::HostTime time) {
      const double frequency = frequency_;
      return frequency == 0 ? 0 : pipewire::test::tone(frequency)(time);
    };
  }

 private:
  std::atomic<double> frequency_ = 0;
};

void waitForDevice(SoundSource& source) {
  if (!eventually([&] { return source.deviceName().has_value(); })) {
    throw std::runtime_error("no device");
  }
}

class SystemSoundRig {
 public:
  SystemSoundRig() { waitForDevice(source_); }
  SoundSource& source() { return source_; }
  void playTone(double frequency) { tone_.set(frequency); }
  void playNothing() { tone_.set(0); }
  void breakDown() { server_.kill(); }

 private:
  TestSoundServer server_;
  VirtualSink sink_{server_.remote(), "sink", "音箱"};
  Tone tone_;
  SoundGenerator player_{server_.remote(), SoundGenerator::Player{}, tone_.waveform()};
  pipewire::SystemSound source_{server_.remote()};
};

class MicrophoneRig {
 public:
  MicrophoneRig() { waitForDevice(source_); }
  SoundSource& source() { return source_; }
  void playTone(double frequency) { tone_.set(frequency); }
  void playNothing() { tone_.set(0); }
  void breakDown() { microphone_.reset(); }

 private:
  TestSoundServer server_;
  Tone tone_;
  std::optional<SoundGenerator> microphone_{std::in_place, server_.remote(),
                                            SoundGenerator::Microphone{"microphone", "话筒"},
                                            tone_.waveform()};
  pipewire::Microphone source_{server_.remote()};
};

class PipeWireCameraRig {
 public:
  CameraSource& source() { return source_; }
  void show(std::uint32_t colour) { colour_ = colour; }
  void breakDown() { camera_.reset(); }

 private:
  void paint(std::span<std::uint8_t> bytes) const {
    const std::uint32_t colour = colour_;
    for (std::size_t index = 0; index + 3 < bytes.size(); index += 4) {
      bytes[index] = static_cast<std::uint8_t>(colour);
      bytes[index + 1] = static_cast<std::uint8_t>(colour >> 8U);
      bytes[index + 2] = static_cast<std::uint8_t>(colour >> 16U);
    }
  }

  TestSoundServer server_;
  std::atomic<std::uint32_t> colour_ = 0;
  std::optional<VirtualCamera> camera_{
      std::in_place, server_.remote(),
      VirtualCamera::Options{.name = "camera", .description = "摄像头", .sizes = {{640, 360}}},
      [this](auto bytes, auto) { paint(bytes); }};
  pipewire::PipeWireCamera source_{server_.remote()};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(PipeWireSystemSound, SoundSourceContract, SystemSoundRig);
INSTANTIATE_TYPED_TEST_SUITE_P(PipeWireMicrophone, SoundSourceContract, MicrophoneRig);
INSTANTIATE_TYPED_TEST_SUITE_P(PipeWire, CameraSourceContract, PipeWireCameraRig);

}  // namespace vesk::capture::contract
