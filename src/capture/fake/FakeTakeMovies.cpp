#include "capture/fake/FakeTakeMovies.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <ranges>
#include <utility>

namespace vesk::capture::fake {

class FakeTakeMovies::Handle final : public TakeMovie {
 public:
  Handle(FakeTakeMovies& owner, std::shared_ptr<Movie> movie)
      : owner_{owner}, movie_{std::move(movie)} {}

  bool offer(Picture, media::HostTime stamp) override {
    const std::scoped_lock lock{owner_.mutex_};
    if (owner_.isFull_) return false;
    movie_->pictures.push_back(stamp);
    return true;
  }
  bool offer(const media::SoundBlock& sound) override {
    const std::scoped_lock lock{owner_.mutex_};
    movie_->sounds.push_back(sound.stamp);
    return true;
  }
  void stillAt(media::HostTime) override {}
  void repeatLatest(media::HostTime stamp) override {
    const std::scoped_lock lock{owner_.mutex_};
    movie_->repeats.push_back(stamp);
  }
  std::optional<std::string> failure() const override {
    const std::scoped_lock lock{owner_.mutex_};
    return textFor(owner_.broken_, movie_->file);
  }
  std::expected<void, std::string> finish() override {
    const std::scoped_lock lock{owner_.mutex_};
    movie_->isFinished = true;
    if (auto error = textFor(owner_.unfinishable_, movie_->file)) {
      return std::unexpected(*std::move(error));
    }
    return {};
  }

 private:
  FakeTakeMovies& owner_;
  std::shared_ptr<Movie> movie_;
};

OpenTakeMovie FakeTakeMovies::opener() {
  return [this](const std::filesystem::path& file, const media::CaptureSettings& settings)
             -> std::expected<std::unique_ptr<TakeMovie>, media::MediaError> {
    const std::scoped_lock lock{mutex_};
    if (openError_) return std::unexpected(*openError_);
    std::ofstream{file} << "fake";
    auto movie = std::make_shared<Movie>();
    movie->file = file;
    movie->settings = settings;
    movies_.push_back(movie);
    return std::make_unique<Handle>(*this, std::move(movie));
  };
}

std::vector<FakeTakeMovies::Movie> FakeTakeMovies::movies() const {
  const std::scoped_lock lock{mutex_};
  std::vector<Movie> copies;
  std::ranges::transform(movies_, std::back_inserter(copies),
                         [](const auto& movie) { return *movie; });
  return copies;
}

std::optional<FakeTakeMovies::Movie> FakeTakeMovies::movie(const std::string& name) const {
  const std::scoped_lock lock{mutex_};
  const auto latestFirst = movies_ | std::views::reverse;
  const auto found = std::ranges::find_if(
      latestFirst, [&](const auto& movie) { return movie->file.filename() == name; });
  return found == latestFirst.end() ? std::nullopt : std::optional{**found};
}

void FakeTakeMovies::failToOpen(std::optional<media::MediaError> error) {
  const std::scoped_lock lock{mutex_};
  openError_ = std::move(error);
}

void FakeTakeMovies::refusePictures(bool isFull) {
  const std::scoped_lock lock{mutex_};
  isFull_ = isFull;
}

void FakeTakeMovies::breakMovie(const std::string& name, const std::string& failure) {
  const std::scoped_lock lock{mutex_};
  broken_.push_back({name, failure});
}

void FakeTakeMovies::failToFinish(const std::string& name, const std::string& error) {
  const std::scoped_lock lock{mutex_};
  unfinishable_.push_back({name, error});
}

std::optional<std::string> FakeTakeMovies::textFor(const std::vector<Trouble>& troubles,
                                                   const std::filesystem::path& file) {
  const auto found = std::ranges::find(troubles, file.filename().string(), &Trouble::name);
  return found == troubles.end() ? std::nullopt : std::optional{found->text};
}

}  // namespace vesk::capture::fake
