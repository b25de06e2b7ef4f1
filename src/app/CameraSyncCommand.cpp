#include "app/CameraSyncCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <vector>

#include "app/EditorStage.h"
#include "compositor/CameraClock.h"
#include "editor/PreviewController.h"
#include "media/HostTime.h"
#include "media/VideoReader.h"
#include "motion/ReportText.h"
#include "package/RecordingProject.h"

namespace vesk::app {
namespace {

namespace fs = std::filesystem;
using editor::PreviewController;
using motion::append;

constexpr double largestEndDeviation = 0.1;
constexpr std::chrono::seconds playingTime{6};
constexpr std::chrono::milliseconds sampleInterval{8};
constexpr std::chrono::milliseconds rowInterval{500};

/// One look at all players while they play.
struct Sample {
  double time = 0;                  ///< of the session
  double main = 0;                  ///< of the main player
  double wanted = 0;                ///< where the camera should be
  double camera = 0;                ///< stamp of the camera's picture that is shown
  bool isNewByOffset = false;       ///< that picture: asked for at the session's time
  bool isNewByCameraClock = false;  ///< the one asked for at the camera's own time
  double soundDrift = 0;  ///< of the sound's clock against the host's since the first sample

  double drift() const { return camera - wanted; }
};

/// Plays the session and looks at its players.
class Sampling {
 public:
  explicit Sampling(PreviewController& session) : session_(session) {}

  std::vector<Sample> run() {
    std::vector<Sample> samples;
    session_.play();
    const auto end = std::chrono::steady_clock::now() + playingTime;
    while (std::chrono::steady_clock::now() < end) {
      EditorStage::runFor(sampleInterval);
      session_.tick();
      if (!session_.isPlaying()) break;
      // What the players need to get going says nothing about how they run.
      if (session_.currentTime() <= 0) continue;
      if (!playing_) playing_ = session_.audioDiagnostics();
      samples.push_back(look());
    }
    session_.pause();
    return samples;
  }

  /// What the main player said of itself while it played; nothing when it did not.
  const std::optional<editor::AudioDiagnostics>& playing() const { return playing_; }

 private:
  Sample look() {
    const media::HostTime now = media::monotonicTime();
    Sample sample{.time = session_.currentTime(), .main = session_.player()->currentTime(now)};
    if (!startHost_) {
      startHost_ = now;
      startMain_ = sample.main;
    }
    sample.soundDrift = sample.main - startMain_ - media::secondsOf(now - *startHost_);
    const auto synced = session_.syncedPlayers();
    if (!synced.empty()) lookAtCamera(synced.front(), sample);
    return sample;
  }

  void lookAtCamera(const editor::SyncedPlayer& camera, Sample& sample) {
    sample.wanted = camera.time(sample.time);
    const auto byOffset = camera.pictures->pictureAt(camera.pictureTime(sample.time));
    sample.isNewByOffset = isNew(byOffset, lastByOffset_);
    sample.camera = byOffset ? byOffset->pts : 0;
    const auto byClock = camera.pictures->pictureAt(camera.pictureTime(sample.main));
    sample.isNewByCameraClock = isNew(byClock, lastByClock_);
  }

  static bool isNew(const std::optional<media::VideoFrame>& picture,
                    std::optional<media::VideoFrame>& last) {
    if (!picture || (last && picture->isSamePictureAs(*last))) return false;
    last = picture;
    return true;
  }

  PreviewController& session_;
  std::optional<editor::AudioDiagnostics> playing_;
  std::optional<media::VideoFrame> lastByOffset_;
  std::optional<media::VideoFrame> lastByClock_;
  std::optional<media::HostTime> startHost_;
  double startMain_ = 0;
};

template <typename Value>
double largest(const std::vector<Sample>& samples, Value value) {
  double found = 0;
  for (const Sample& sample : samples) found = std::max(found, std::abs(value(sample)));
  return found;
}

std::string rows(const std::vector<Sample>& samples) {
  std::string text;
  double nextRow = 0;
  const auto word = [](bool isNew) { return isNew ? "有" : "无"; };
  for (const Sample& sample : samples) {
    if (sample.time < nextRow) continue;
    nextRow = sample.time + std::chrono::duration<double>(rowInterval).count();
    append(text,
           "  t={:.2f}  主 {:.3f}  画中画 {:.3f}  想要 {:.3f}  漂移 {:+.3f}  按现实现{}  "
           "按摄像头钟{}\n",
           sample.time, sample.main, sample.camera, sample.wanted, sample.drift(),
           word(sample.isNewByOffset), word(sample.isNewByCameraClock));
  }
  return text;
}

std::string layoutReport(const PreviewController& session) {
  std::string text = "  预览素材的轨道摆放：\n";
  for (const std::string& line : session.trackLayoutLines()) append(text, "    {}\n", line);
  const std::vector<std::string> warnings = session.trackLayoutWarnings();
  for (const std::string& warning : warnings) append(text, "    ✗ {}\n", warning);
  if (warnings.empty()) text += "    ✓ 轨道摆放正常（时长没被顶长、没有空洞）\n";
  return text;
}

/// Where the microphone's sound begins in what plays; 0 without one.
double micStart(const editor::PlaybackComposition& composition) {
  for (const editor::PlaybackTrack& track : composition.tracks) {
    if (track.id != composition.micTrackID) continue;
    const auto sound = std::ranges::find(track.segments, false, &editor::TrackSegment::isEmpty);
    if (sound != track.segments.end()) return sound->target;
  }
  return 0;
}

std::string micReport(const PreviewController& session) {
  return fmt::format("  micOffset {:.3f}s   mic.m4a {}\n",
                     micStart(session.player()->composition()),
                     session.project()->micURL() ? "存在" : "缺失");
}

std::string cameraReport(const PreviewController& session, double offset) {
  const auto file = session.project()->cameraURL();
  if (!file) return "  ✗ 录制包里没有可用的 camera.mov\n";
  const auto camera = media::VideoReader::open(*file, 1);
  if (!camera) return fmt::format("  ✗ {}\n", camera.error().message);
  std::string text = cameraEndReport({.duration = session.duration(),
                                      .cameraOffset = offset,
                                      .cameraLength = camera->info().duration});
  if (session.syncedPlayers().empty()) text += "  ✗ 摄像头画面没有跟着主播放器\n";
  return text;
}

std::string playerReport(const std::optional<editor::AudioDiagnostics>& state, bool hasMic) {
  if (!state) return "\n  ✗ 拿不到主播放器状态\n";
  const editor::AudioDiagnostics& playing = *state;
  std::string text =
      fmt::format("  主播放器  rate={}  volume={}  muted={}  轨道数={}  状态={}\n", playing.rate,
                  playing.volume, playing.muted, playing.trackCount, playing.statusText);
  if (hasMic && playing.trackCount < 2) {
    append(text, "  ✗ 只有 {} 条音频轨 —— 麦克风没并进来，编辑器里听不到人声\n",
           playing.trackCount);
  } else {
    append(text, "  ✓ {} 条音频轨（系统音 + 麦克风）\n", playing.trackCount);
  }
  if (!(playing.rate > 0) || !(playing.volume > 0) || playing.muted) {
    text += "  ✗ 主播放器没在正常出声\n";
  }
  return text;
}

std::string countReport(const std::vector<Sample>& samples) {
  const auto share = [&](auto count) {
    return samples.empty()
               ? 0.0
               : 100.0 * static_cast<double>(count) / static_cast<double>(samples.size());
  };
  const auto byOffset = std::ranges::count(samples, true, &Sample::isNewByOffset);
  const auto byClock = std::ranges::count(samples, true, &Sample::isNewByCameraClock);
  return fmt::format(
      "  采样 {} 次（约 6 秒播放）\n"
      "  按当前实现（主时钟＋偏移）取到新帧：{} 次  {:.1f}%\n"
      "  改用摄像头播放器自己的时钟：      {} 次  {:.1f}%\n"
      "  画中画最大漂移 {:.3f}s   麦克风最大漂移 {:.3f}s\n",
      samples.size(), byOffset, share(byOffset), byClock, share(byClock),
      largest(samples, [](const Sample& sample) { return sample.drift(); }),
      largest(samples, [](const Sample& sample) { return sample.soundDrift; }));
}

/// Prints a piece and remembers whether something in it failed.
class Report {
 public:
  explicit Report(std::FILE* out) : out_(out) {}
  void print(std::string_view text) {
    fmt::print(out_, "{}", text);
    std::fflush(out_);
    hasFailed_ = hasFailed_ || text.find("✗") != std::string_view::npos;
  }
  int exitCode() const { return hasFailed_ ? 1 : 0; }

 private:
  std::FILE* out_;
  bool hasFailed_ = false;
};

std::optional<fs::path> packageToDiagnose(const CommandContext& context) {
  if (const auto named = context.commandLine.value("--package")) return fs::path(*named);
  return newestCameraPackage(context.libraryRoot());
}

}  // namespace

std::string cameraEndReport(const CameraEnd& end) {
  const double mapped = compositor::cameraTime(end.duration, end.cameraOffset);
  const double deviation = std::abs(mapped - end.cameraLength);
  const double wrong = end.duration + end.cameraOffset;
  return fmt::format(
      "  时长  素材 {:.3f}s   camera.mov {:.3f}s   差 {:.3f}s（应≈offset {:.3f}s）\n"
      "  末尾映射  cameraTime({:.2f}) = {:.2f}   camera.mov 末尾 {:.2f}   偏差 {:.3f}s  {}\n"
      "     （写成 t + offset 的话是 {:.2f}，超出末尾 {:.2f}s，最后那段定格，且全程口型早 "
      "{:.2f}s）\n",
      end.duration, end.cameraLength, end.duration - end.cameraLength, end.cameraOffset,
      end.duration, mapped, end.cameraLength, deviation,
      deviation <= largestEndDeviation ? "✓" : "✗ 符号或偏差算错了，口型会对不上", wrong,
      wrong - end.cameraLength, 2 * end.cameraOffset);
}

std::optional<fs::path> newestCameraPackage(const fs::path& root) {
  const std::vector<fs::path> packages = package::listPackages(root);
  const auto found = std::ranges::find_if(packages, [](const fs::path& candidate) {
    std::error_code error;
    return fs::exists(candidate / "camera.mov", error);
  });
  if (found == packages.end()) return std::nullopt;
  return *found;
}

int diagnoseCameraSync(const CommandContext& context) {
  Report report(context.out);
  const auto package = packageToDiagnose(context);
  if (!package) {
    report.print("找不到带 camera.mov 的录制包\n");
    return 1;
  }
  report.print(fmt::format("{0}\n 画中画同步诊断 · {1}\n{0}\n", motion::ruler(),
                           package::withoutTrailingSlash(*package).filename().string()));
  EditorStage stage(context.library(), context.openSound());
  const auto session = stage.makeSession();
  session->open(*package);
  if (!session->hasProject()) {
    report.print(fmt::format("✗ 打开失败：{}\n", session->loadError().toStdString()));
    return 1;
  }
  const auto project = session->project();
  const double offset = compositor::cameraOffset(project->meta);
  report.print(
      fmt::format("  素材时长 {:.2f}s   cameraOffset {:.3f}s\n", session->duration(), offset));
  report.print(layoutReport(*session));
  report.print(micReport(*session));
  report.print(cameraReport(*session, offset));

  Sampling sampling(*session);
  const std::vector<Sample> samples = sampling.run();
  report.print(rows(samples));
  report.print(playerReport(sampling.playing(), project->micURL().has_value()));
  report.print(countReport(samples));
  return report.exitCode();
}

}  // namespace vesk::app
