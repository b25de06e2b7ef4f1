// Measures the editor's window on a display without hardware and a sound server without devices:
// from a recording's opening to its first picture, seeking, playing, standing still, memory, and
// how far sound and picture drift apart.
// Usage: editor_figures PACKAGE [seconds of the drift, 300] [what alone is to be measured: opening,
// seeking, playing, rest, memory, hour or drift]
#include <fmt/format.h>
#include <malloc.h>
#include <sys/resource.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "FigureTakes.h"
#include "app/window/GuiSetup.h"
#include "app/window/MainWindow.h"
#include "app/window/VeskApp.h"
#include "capture/pipewire/SystemSound.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/pipewire/VirtualSink.h"
#include "capture/x11/TestDisplay.h"
#include "editor/pipewire/SoundOutputs.h"
#include "package/TemporaryDirectory.h"
#include "package/TrashFolder.h"
#include "package/UserDefaults.h"

namespace {

using namespace vesk;
using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// What is allocated, without what the allocator keeps for later.
double usedMegabytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) / (1 << 20);
}

double residentMegabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::atof(line.c_str() + 6) / 1024;  // NOLINT
  }
  return 0;
}

void print(std::string_view name, std::vector<double> values, std::string_view unit) {
  std::ranges::sort(values);
  const auto at = [&](double share) {
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
  };
  fmt::print("{:<46} median {:8.1f}   95 % {:8.1f}   most {:8.1f} {}  ({} times)\n", name, at(0.5),
             at(0.95), at(1), unit, values.size());
  std::fflush(stdout);
}

/// The window with all that is around it.
class Stage {
 public:
  explicit Stage(capture::pipewire::test::TestSoundServer& server)
      : library_({.defaults = defaults_,
                  .trashFolder = package::TrashFolder(package::TrashFolder::currentSurroundings()),
                  .makeThumbnail = {},
                  .askForFolder = {},
                  .now = [] { return package::Timestamp{}; }}),
        app_({.mode = app::RootMode::edit}, library_,
             editor::pipewire::openSoundOutput(server.remote())),
        window_(app::MainWindow::create(app_)) {
    QObject::connect(
        &window(), &QQuickWindow::frameSwapped, &window(), [this] { ++frames_; },
        Qt::DirectConnection);
    window_->show();
    runFor(1500ms);
  }

  QQuickWindow& window() { return window_->window(); }
  editor::PreviewController& session() { return app_.preview(); }
  editor::TimelineView& timeline() {
    return *app_.properties()[QStringLiteral("timeline")].value<editor::TimelineView*>();
  }
  int frames() const { return frames_; }
  const package::TemporaryDirectory& folder() const { return folder_; }

  static void runFor(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
  }

  /// Waits until the exact picture is on the screen; seconds.
  double untilShown() {
    const auto start = Clock::now();
    editor::Player& player = *session().player();
    waitFor([&] { return player.hasExactPictures(session().currentTime()); });
    // Whatever was drawn before may have been of the picture before.
    window().update();
    const int before = frames_;
    waitFor([&] { return frames_ != before; });
    return secondsSince(start);
  }

 private:
  static void waitFor(const std::function<bool()>& condition) {
    QTimer waking;
    waking.start(1ms);
    const auto start = Clock::now();
    while (!condition() && secondsSince(start) < 10) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
  }

  package::TemporaryDirectory folder_;
  package::UserDefaults defaults_{folder_ / "defaults.json"};
  package::RecordingLibrary library_;
  app::VeskApp app_;
  std::unique_ptr<app::MainWindow> window_;
  std::atomic<int> frames_ = 0;
};

void measureOpening(Stage& stage, std::string_view name, const fs::path& package, int times) {
  std::vector<double> whole;
  std::vector<double> loading;
  for (int round = 0; round < times; ++round) {
    const auto start = Clock::now();
    stage.session().open(package);
    loading.push_back(1000 * secondsSince(start));
    stage.untilShown();
    whole.push_back(1000 * secondsSince(start));
    Stage::runFor(300ms);
  }
  print(fmt::format("open {}: to its first picture", name), whole, "ms");
  print(fmt::format("open {}: of that, the session", name), loading, "ms");
}

void measureSeeking(Stage& stage) {
  std::mt19937_64 random(20261121);
  std::uniform_real_distribution<double> anywhere(0, stage.session().duration());
  std::vector<double> latencies;
  for (int round = 0; round < 40; ++round) {
    const auto start = Clock::now();
    stage.session().seek(anywhere(random));
    stage.untilShown();
    latencies.push_back(1000 * secondsSince(start));
    Stage::runFor(50ms);
  }
  print("seek anywhere: to its picture", latencies, "ms");
}

/// Drags the playhead with a request each 16 ms, and counts the frames drawn.
void measureDrag(Stage& stage, double speed) {
  constexpr double length = 4;
  const double from = speed > 0 ? 3 : 3 + length * -speed;
  stage.session().seek(from);
  stage.untilShown();
  const int before = stage.frames();
  const auto start = Clock::now();
  while (secondsSince(start) < length) {
    stage.session().seek(from + speed * secondsSince(start));
    Stage::runFor(16ms);
  }
  fmt::print("{:<46} {:.1f} frames a second\n",
             fmt::format("drag of the playhead at {:+.0f}×", speed),
             (stage.frames() - before) / secondsSince(start));
}

void measurePlaying(Stage& stage, double from, double length) {
  stage.session().seek(from);
  stage.untilShown();
  stage.session().play();
  Stage::runFor(1s);
  const int frames = stage.frames();
  const double cpu = cpuSeconds();
  const auto start = Clock::now();
  Stage::runFor(std::chrono::milliseconds(static_cast<int>(1000 * length)));
  const double time = secondsSince(start);
  fmt::print("{:<46} {:.1f} frames a second, {:.0f} % of a core\n", "playing",
             (stage.frames() - frames) / time, 100 * (cpuSeconds() - cpu) / time);
  stage.session().pause();
}

/// Scrolls the timeline from end to end at one scale.
void measureScrolling(Stage& stage, double pxPerSec) {
  editor::TimelineViewport& viewport = *stage.timeline().viewport();
  viewport.setScale(pxPerSec, 0);
  viewport.setContentX(0);
  Stage::runFor(500ms);
  constexpr double length = 5;
  const double distance = std::min(viewport.contentWidth() - viewport.width(), 1500 * length);
  const int frames = stage.frames();
  const auto start = Clock::now();
  while (secondsSince(start) < length) {
    viewport.setContentX(distance * secondsSince(start) / length);
    Stage::runFor(5ms);
  }
  fmt::print("{:<46} {:.1f} frames a second\n",
             fmt::format("scrolling the timeline at {} points a second", pxPerSec),
             (stage.frames() - frames) / secondsSince(start));
}

void measureRest(Stage& stage) {
  Stage::runFor(1500ms);
  const int frames = stage.frames();
  const double cpu = cpuSeconds();
  const auto start = Clock::now();
  Stage::runFor(10s);
  fmt::print("{:<46} {} frames, {:.2f} % of a core\n", "paused and untouched for 10 s",
             stage.frames() - frames, 100 * (cpuSeconds() - cpu) / secondsSince(start));
}

void measureMemory(Stage& stage, const fs::path& package) {
  std::vector<fs::path> copies;
  for (int copy = 0; copy < 10; ++copy) {
    copies.push_back(stage.folder() / fmt::format("copy{}.recording", copy));
    fs::copy(package, copies.back(), fs::copy_options::recursive);
  }
  for (int round = 0; round < 4; ++round) {
    for (const fs::path& copy : copies) {
      stage.session().open(copy);
      stage.untilShown();
      stage.session().seek(stage.session().duration() / 2);
      stage.untilShown();
    }
    fmt::print("{:<46} {:.0f} MB in use, {:.0f} MB resident\n",
               fmt::format("memory after {} packages", 10 * (round + 1)), usedMegabytes(),
               residentMegabytes());
  }
}

/// When what is to be heard at the sink's monitor begins to be loud, on the host's clock.
class Onsets {
 public:
  explicit Onsets(const std::string& remote) : sound_(remote) {
    auto listening = sound_.listen([this](const media::SoundBlock& block) { take(block); },
                                   [](const capture::BackendError&) {});
    if (listening) listening_ = std::move(*listening);
  }

  std::vector<double> times() {
    const std::scoped_lock lock(mutex_);
    return times_;
  }

 private:
  void take(const media::SoundBlock& block) {
    constexpr float loud = 0.05F;
    constexpr double quietFor = 0.5;
    const std::scoped_lock lock(mutex_);
    for (std::size_t index = 0; index < block.samples.size(); index += 2) {
      if (std::abs(block.samples[index]) < loud) continue;
      const double time = std::chrono::duration<double>(block.stamp).count() +
                          static_cast<double>(index) / 2 / media::soundRate;
      if (time - lastLoud_ > quietFor) times_.push_back(time);
      lastLoud_ = time;
    }
  }

  capture::pipewire::SystemSound sound_;
  std::mutex mutex_;
  std::vector<double> times_;
  double lastLoud_ = -1;
  std::unique_ptr<capture::Listening> listening_;
};

bool isBright(const std::optional<media::VideoFrame>& picture) {
  if (!picture) return false;
  const media::VideoPlane& luma = picture->planes[0];
  return std::to_integer<int>(luma.data[luma.height / 2 * luma.stride + luma.width / 2]) > 128;
}

double hostSeconds() {
  return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

/// How much greater the last third is than the first, which single late frames do not disturb.
double drift(const std::vector<double>& values) {
  const auto third = static_cast<std::ptrdiff_t>(values.size() / 3);
  return median({values.end() - third, values.end()}) -
         median({values.begin(), values.begin() + third});
}

constexpr double flashPeriod = 2;

/// Plays flashes that beep, and compares when they are drawn with when they are heard.
void measureDrift(Stage& stage, const std::string& remote, double seconds) {
  stage.session().open(bench::makeFlashingTake(stage.folder().path(), seconds + 5));
  stage.untilShown();
  Onsets onsets(remote);
  std::vector<double> flashes;
  std::vector<double> afterDue;  // by the player's clock, when the picture is chosen
  std::vector<double> drawing;   // from then until it is given to the display
  bool wasBright = true;
  std::atomic<double> chosen = 0;
  std::mutex mutex;
  const auto drawn = QObject::connect(&stage.window(), &QQuickWindow::afterAnimating, [&] {
    const bool bright = isBright(stage.session().screenPicture());
    if (bright && !wasBright) {
      chosen = hostSeconds();
      afterDue.push_back(1000 * std::remainder(stage.session().currentTime(), flashPeriod));
    }
    wasBright = bright;
  });
  const auto swapped = QObject::connect(
      &stage.window(), &QQuickWindow::frameSwapped, &stage.window(),
      [&] {
        const double at = chosen.exchange(0);
        if (at == 0) return;
        const std::scoped_lock lock(mutex);
        flashes.push_back(hostSeconds());
        drawing.push_back(1000 * (flashes.back() - at));
      },
      Qt::DirectConnection);
  const int framesBefore = stage.frames();
  stage.session().play();
  Stage::runFor(std::chrono::milliseconds(static_cast<int>(1000 * seconds)));
  stage.session().pause();
  fmt::print("{:<46} {:.1f} frames a second\n", "playing the flashes",
             (stage.frames() - framesBefore) / seconds);
  QObject::disconnect(drawn);
  QObject::disconnect(swapped);

  const std::scoped_lock lock(mutex);
  std::vector<double> late;
  const std::vector<double> beeps = onsets.times();
  for (const double flash : flashes) {
    const auto nearest =
        std::ranges::min_element(beeps, {}, [&](double beep) { return std::abs(beep - flash); });
    if (nearest == beeps.end() || std::abs(*nearest - flash) > 0.5) continue;
    late.push_back(1000 * (flash - *nearest));
  }
  if (late.size() < 3) {
    fmt::print("no flash was heard: {} flashes, {} beeps\n", flashes.size(), beeps.size());
    return;
  }
  print("flash chosen later than due by", afterDue, "ms");
  print("from there to the display", drawing, "ms");
  print("flash drawn later than its beep is heard by", late, "ms");
  fmt::print("{:<46} {:+.1f} ms over {:.0f} s\n", "drift of picture against sound", drift(late),
             seconds);
}

int measure(const fs::path& original, double driftSeconds, std::string_view only) {
  capture::pipewire::test::TestSoundServer server;
  const capture::pipewire::test::VirtualSink sink(server.remote(), "figures", "figures");
  server.setDefaultSink("figures");
  Stage stage(server);
  const fs::path package = stage.folder() / original.filename().string();
  fs::copy(original, package, fs::copy_options::recursive);

  const auto isWanted = [&](std::string_view part) { return only.empty() || only == part; };
  measureOpening(stage, "the package", package, isWanted("opening") ? 10 : 1);
  if (isWanted("seeking")) {
    measureSeeking(stage);
    for (const double speed : {1.0, -1.0, 4.0, -4.0}) measureDrag(stage, speed);
  }
  if (isWanted("playing")) measurePlaying(stage, 2, 12);
  if (isWanted("rest")) measureRest(stage);
  if (isWanted("memory")) measureMemory(stage, package);
  if (isWanted("hour")) {
    measureOpening(stage, "an hour", bench::makeHourLongTake(stage.folder().path()), 10);
    for (const double scale : {4.0, 24.0, 100.0}) measureScrolling(stage, scale);
    measurePlaying(stage, 100, 6);
  }
  if (isWanted("drift")) measureDrift(stage, server.remote(), driftSeconds);
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: editor_figures PACKAGE [seconds of the drift]\n");
    return EXIT_FAILURE;
  }
  const capture::x11::test::TestDisplay display(
      {.width = 1920, .height = 1080, .hasWindowManager = true, .arguments = {}});
  qputenv("DISPLAY", QByteArray::fromStdString(display.name()));
  qputenv("QT_QPA_PLATFORM", "xcb");
  qputenv("LIBGL_ALWAYS_SOFTWARE", "1");
  app::chooseGraphics();
  const QGuiApplication application(argc, argv);
  app::describeApplication();
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return measure(argv[1], argc > 2 ? std::atof(argv[2]) : 300,  // NOLINT: any number will do
                 argc > 3 ? argv[3] : "");
}
