#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <expected>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "export/AudioMux.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"
#include "package/Log.h"
#include "package/LogCapture.h"

namespace vesk::exporting {

inline constexpr double noteLoudness = 0.2;

/// A take of two seconds: a note in the system's sound, and a beep in the narration.
class AudioMuxStage : public testing::TestWithParam<ExportSettings::Format> {
 protected:
  AudioMuxStage() {
    project_.url = folder_ / "take.recording";
    std::filesystem::create_directory(project_.url);
    std::filesystem::create_directory(output_);
    project_.meta.firstFramePTS = 81'234.5;
    media::makeSilentMovie(
        movie_,
        GetParam() == ExportSettings::Format::mp4 ? media::Container::mp4 : media::Container::mov,
        120);
    silent_ = media::bytesOf(movie_);
    picture_ = media::storedPicture(movie_).packets;
  }

  void addSystemSound(double seconds = 2) {
    media::makeSound(screen_, {.muxer = "mov",
                               .channels = 2,
                               .seconds = seconds,
                               .wave = media::tone(440, noteLoudness * std::sqrt(2.0F))});
  }

  /// Narration with a beep at 1.5 s of the recording.
  void addNarration(double late = 0, double seconds = 1.5) {
    media::makeSound(mic_, {.seconds = seconds, .wave = media::beep(1.5 - late)});
    project_.meta.micFirstSamplePTS = *project_.meta.firstFramePTS + late;
  }

  std::expected<void, ExportError> mux(AudioGains gains = {}, const AudioOperations& work = {}) {
    const package::LogCapture capture{package::LogCategory::exporting};
    auto outcome = muxAudio(project_, movie_, GetParam(), gains, work);
    log_ = capture.text();
    return outcome;
  }

  void expectSound(AudioGains gains = {}, const AudioOperations& work = {}) {
    const auto outcome = mux(gains, work);
    EXPECT_TRUE(outcome) << (outcome ? "" : outcome.error().description());
    EXPECT_TRUE(media::storedPicture(movie_).packets == picture_);
    EXPECT_THAT(files(), testing::ElementsAre("tour"));
  }

  void expectSilentMovie() {
    EXPECT_TRUE(media::bytesOf(movie_) == silent_);
    EXPECT_THAT(files(), testing::ElementsAre("tour"));
  }

  std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(output_)) {
      names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
  }

  media::TemporaryFolder folder_;
  std::filesystem::path output_ = folder_ / "out";
  std::filesystem::path movie_ = output_ / "tour";
  std::filesystem::path screen_ = folder_ / "take.recording" / "screen.mov";
  std::filesystem::path mic_ = folder_ / "take.recording" / "mic.m4a";
  package::RecordingProject project_;
  std::string silent_;
  std::vector<media::StoredPacket> picture_;
  std::string log_;
};

}  // namespace vesk::exporting
