// A sound output, a microphone and a camera that beep and light up at the same moments, for as long
// as the program runs. It says "ready" when they can be used, and ends with SIGTERM or SIGINT.
//
//   virtual_devices [--remote SOCKET] [--period SECONDS | --at SECONDS,SECONDS,…]
//                   [--length SECONDS] [--frequency HZ] [--tone HZ]
//
// Beeps of `frequency` and flashes of `length` come every `period` of CLOCK_MONOTONIC, or at the
// given times of it. With `tone` the sound output plays that without a pause instead of beeping.
#include <fmt/format.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "capture/pipewire/Microphone.h"
#include "capture/pipewire/Moments.h"
#include "capture/pipewire/PipeWireCamera.h"
#include "capture/pipewire/SoundGenerator.h"
#include "capture/pipewire/SystemSound.h"
#include "capture/pipewire/VirtualCamera.h"
#include "capture/pipewire/VirtualSink.h"
#include "capture/x11/Eventually.h"

namespace vesk::capture::pipewire::test {
namespace {

using Options = std::map<std::string, std::string>;

/// @throws std::runtime_error when there is one without a value, or that nobody knows.
Options optionsIn(const std::vector<std::string>& arguments) {
  Options options{{"--remote", ""},    {"--period", "1"},       {"--at", ""},
                  {"--length", "0.2"}, {"--frequency", "1000"}, {"--tone", ""}};
  for (std::size_t index = 0; index < arguments.size(); index += 2) {
    const bool isKnown = options.contains(arguments[index]);
    if (!isKnown || index + 1 == arguments.size()) throw std::runtime_error(arguments[index]);
    options[arguments[index]] = arguments[index + 1];
  }
  return options;
}

media::HostTime timeOf(const std::string& seconds) {
  return std::chrono::duration_cast<media::HostTime>(
      std::chrono::duration<double>{std::stod(seconds)});
}

Moments momentsIn(const Options& options) {
  const media::HostTime length = timeOf(options.at("--length"));
  if (options.at("--at").empty()) return every(timeOf(options.at("--period")), length);
  std::vector<media::HostTime> times;
  std::istringstream list{options.at("--at")};
  for (std::string time; std::getline(list, time, ',');) times.push_back(timeOf(time));
  return at(std::move(times), length);
}

void run(const Options& options, const sigset_t& end) {
  const std::string& remote = options.at("--remote");
  const Moments moments = momentsIn(options);
  const Waveform beeping = beeps(std::stod(options.at("--frequency")), moments);
  const std::string& steady = options.at("--tone");

  const VirtualSink sink{remote, "vesk-test-sink", "测试音箱"};
  const SoundGenerator player{remote, SoundGenerator::Player{"vesk-test-sink"},
                              steady.empty() ? beeping : tone(std::stod(steady))};
  const SoundGenerator microphone{
      remote, SoundGenerator::Microphone{"vesk-test-microphone", "测试麦克风"}, beeping};
  const VirtualCamera camera{
      remote, {.name = "vesk-test-camera", .description = "测试摄像头"}, flashes(moments)};
  const bool areThere = x11::test::eventually([&] {
    return SystemSound{remote}.deviceName() && Microphone{remote}.deviceName() &&
           !PipeWireCamera{remote}.devices().empty();
  });
  if (!areThere) throw std::runtime_error("the devices do not appear");
  fmt::print("ready\n");
  std::fflush(stdout);
  int signal = 0;
  sigwait(&end, &signal);
}

}  // namespace
}  // namespace vesk::capture::pipewire::test

int main(int count, char** arguments) {
  // Blocked before there are threads, so that none of them gets it.
  sigset_t end{};
  sigemptyset(&end);
  sigaddset(&end, SIGTERM);
  sigaddset(&end, SIGINT);
  pthread_sigmask(SIG_BLOCK, &end, nullptr);
  try {
    using namespace vesk::capture::pipewire::test;
    run(optionsIn({arguments + 1, arguments + count}), end);
  } catch (const std::exception& error) {
    fmt::print(stderr, "virtual_devices: {}\n", error.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
