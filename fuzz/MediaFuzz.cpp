// A package whose media files are any bytes opens, plays, gives a thumbnail and exports its sound,
// or says why not. The first byte tells which file of the package the others are.
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "ScratchFolder.h"
#include "compositor/CameraFrameReader.h"
#include "export/AudioMux.h"
#include "media/I420Picture.h"
#include "media/Thumbnail.h"
#include "media/VideoReader.h"
#include "media/VideoWriter.h"
#include "package/FileText.h"
#include "package/RecordingProject.h"

namespace {

namespace fs = std::filesystem;
using namespace vesk;
using fuzz::require;

constexpr std::array<std::string_view, 4> fileNames{"screen.mov", "camera.mov", "mic.m4a",
                                                    "thumb.jpg"};
constexpr int framesLookedAt = 200;

/// Where the files of a run lie.
class Stage {
 public:
  Stage() { writeSilentMovie(); }

  fs::path package() const { return folder_.path() / "take.recording"; }

  /// A package with one media file.
  void lay(std::string_view name, std::string_view bytes) const {
    fs::remove_all(package());
    fs::create_directory(package());
    require(package::writeFile(package() / "meta.json", R"({"duration":0.5,"firstFramePTS":1,
        "micFirstSamplePTS":1.1,"cameraFirstFramePTS":1.05})")
                .has_value());
    require(package::writeFile(package() / "events.jsonl", "").has_value());
    require(package::writeFile(package() / name, bytes).has_value());
  }

  /// A fresh copy of a finished movie without sound.
  fs::path silentMovie() const {
    fs::path copy = folder_.path() / "movie.mp4";
    fs::copy_file(folder_.path() / "silent.mp4", copy, fs::copy_options::overwrite_existing);
    return copy;
  }

  /// An export must leave its movie and nothing else.
  void requireOneMovie() const {
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      const std::string name = entry.path().filename().string();
      require(name == "movie.mp4" || name == "silent.mp4" || name == "take.recording");
    }
    require(fs::exists(folder_.path() / "movie.mp4"));
  }

 private:
  void writeSilentMovie() const {
    constexpr int width = 32;
    constexpr int height = 18;
    auto writer =
        media::VideoWriter::open(folder_.path() / "silent.mp4",
                                 {.width = width, .height = height, .fps = 10, .bitRate = 50'000});
    require(writer.has_value());
    const media::I420Picture picture(width, height);
    for (int index = 0; index < 5; ++index) require(writer->write(picture, index).has_value());
    require(writer->finish().has_value());
  }

  fuzz::ScratchFolder folder_;
};

void play(const fs::path& movie) {
  auto reader = media::VideoReader::open(movie, 1);
  if (!reader) {
    require(!reader.error().message.empty());
    return;
  }
  double latest = -1e300;
  for (int index = 0; index < framesLookedAt; ++index) {
    const auto frame = reader->next();
    if (!frame || !*frame) break;
    require((*frame)->width == reader->info().width && (*frame)->height == reader->info().height);
    require((*frame)->pts >= latest);
    latest = (*frame)->pts;
  }
}

void exportSound(const Stage& stage, const package::RecordingProject& project) {
  for (const double gain : {1.0, 0.5}) {
    const auto outcome =
        exporting::muxAudio(project, stage.silentMovie(), exporting::ExportSettings::Format::mp4,
                            {.system = gain, .mic = gain});
    require(outcome.has_value() || !outcome.error().message.empty());
    stage.requireOneMovie();
  }
}

void showCamera(const fs::path& movie) {
  compositor::CameraFrameReader reader(movie);
  for (const double time : {0.0, 0.1, 5.0}) reader.frame(time);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Stage stage;
  if (size == 0) return -1;
  const std::string_view name = fileNames.at(data[0] % fileNames.size());
  stage.lay(name, {reinterpret_cast<const char*>(data) + 1, size - 1});
  const auto project = package::RecordingProject::load(stage.package(), {});
  require(project.has_value());
  if (name == "screen.mov") play(project->screenURL());
  if (name == "camera.mov") showCamera(*project->cameraURL());
  if (name == "screen.mov" || name == "mic.m4a") exportSound(stage, *project);
  if (name == "screen.mov" || name == "thumb.jpg") {
    const auto picture = media::thumbnail(stage.package());
    require(!picture || (picture->width <= 4096 && picture->height <= 4096));
  }
  return 0;
}
