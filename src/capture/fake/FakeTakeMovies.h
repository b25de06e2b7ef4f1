#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "capture/TakeMovie.h"

namespace vesk::capture::fake {

/// Movie files that only remember what was offered to them. May be used from any thread.
class FakeTakeMovies {
 public:
  struct Movie {
    std::filesystem::path file;
    media::CaptureSettings settings;
    std::vector<media::HostTime> pictures;  ///< the stamps of those that were taken
    std::vector<media::HostTime> repeats;
    std::vector<media::HostTime> sounds;
    bool isFinished = false;
  };

  /// Opens movies here, for as long as this lives. It makes the file, so that the folder has it.
  OpenTakeMovie opener();

  /// In the order in which they were opened.
  std::vector<Movie> movies() const;
  /// The one of this file name that was opened last.
  std::optional<Movie> movie(const std::string& name) const;

  // Of all movies from now on.
  void failToOpen(std::optional<media::MediaError> error);
  void refusePictures(bool isFull);
  /// @param name of the file to which nothing can be written any more.
  void breakMovie(const std::string& name, const std::string& failure);
  void failToFinish(const std::string& name, const std::string& error);

 private:
  class Handle;
  struct Trouble {
    std::string name;
    std::string text;
  };
  static std::optional<std::string> textFor(const std::vector<Trouble>& troubles,
                                            const std::filesystem::path& file);

  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<Movie>> movies_;
  std::optional<media::MediaError> openError_;
  bool isFull_ = false;
  std::vector<Trouble> broken_;
  std::vector<Trouble> unfinishable_;
};

}  // namespace vesk::capture::fake
