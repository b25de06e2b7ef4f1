#include "capture/RecordedMovie.h"

#include <utility>

#include "media/CaptureMovie.h"

namespace vesk::capture {
namespace {

class RecordedMovie final : public TakeMovie {
 public:
  explicit RecordedMovie(media::CaptureMovie movie) : movie_{std::move(movie)} {}

  bool offer(Picture picture, media::HostTime stamp) override {
    return movie_.offer(std::move(picture), stamp);
  }
  bool offer(const media::SoundBlock& sound) override { return movie_.offer(sound); }
  void stillAt(media::HostTime now) override { movie_.stillAt(now); }
  void repeatLatest(media::HostTime stamp) override { movie_.repeatLatest(stamp); }

  std::optional<std::string> failure() const override {
    const auto status = movie_.status();
    return status.failure ? std::optional{status.failure->message} : std::nullopt;
  }
  std::expected<void, std::string> finish() override {
    const auto finished = movie_.finish();
    if (!finished) return std::unexpected(finished.error().message);
    return {};
  }

 private:
  media::CaptureMovie movie_;
};

}  // namespace

std::expected<std::unique_ptr<TakeMovie>, media::MediaError> openRecordedMovie(
    const std::filesystem::path& file, const media::CaptureSettings& settings) {
  auto movie = media::CaptureMovie::create(file, settings);
  if (!movie) return std::unexpected(movie.error());
  return std::make_unique<RecordedMovie>(*std::move(movie));
}

}  // namespace vesk::capture
