#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

#include "capture/ShortcutSettings.h"
#include "media/PictureDuration.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"
#include "media/VideoReader.h"
#include "package/LogCapture.h"
#include "take/TakeStage.h"

namespace vesk::take {
namespace {

using package::CaptureScope;
using package::RecordedEvent;
using testing::Gt;
using testing::Lt;
using namespace std::chrono_literals;
using Kind = RecordedEvent::Kind;

constexpr std::uint32_t red = 0xE01010;
constexpr int side = 120;

/// What share of a movie's pixels, in thousandths, has such a colour difference at a time.
double share(const std::filesystem::path& movie, double time,
             const std::function<bool(int cb, int cr)>& isWanted) {
  auto reader = media::VideoReader::open(movie);
  if (!reader) return -1;
  std::optional<media::VideoFrame> shown;
  for (auto frame = reader->next(); frame && *frame && (*frame)->pts <= time;
       frame = reader->next()) {
    shown = **frame;
  }
  if (!shown) return -1;
  const auto& cb = shown->planes[1];
  const auto& cr = shown->planes[2];
  int count = 0;
  for (int y = 0; y < cb.height; ++y) {
    for (int x = 0; x < cb.width; ++x) {
      count += isWanted(std::to_integer<int>(cb.data[y * cb.stride + x]),
                        std::to_integer<int>(cr.data[y * cr.stride + x]))
                   ? 1
                   : 0;
    }
  }
  return 1000.0 * count / (cb.width * cb.height);
}

bool isRed(int cb, int cr) {
  return cr > 190 && cb < 128;
}

bool isGreen(int cb, int cr) {
  return cr < 80 && cb < 90;
}

/// How much of a sound between two times is of one frequency: 0…1.
double purity(const std::vector<media::StereoSample>& sound, double from, double to,
              double frequency) {
  double sine = 0;
  double cosine = 0;
  double power = 0;
  const auto first = static_cast<std::size_t>(from * 48'000);
  const auto last = std::min(sound.size(), static_cast<std::size_t>(to * 48'000));
  for (std::size_t i = first; i < last; ++i) {
    const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(i) / 48'000;
    const double value = sound[i].left;
    sine += value * std::sin(angle);
    cosine += value * std::cos(angle);
    power += value * value;
  }
  const auto count = static_cast<double>(last - first);
  return power == 0 ? 0 : 2 * (sine * sine + cosine * cosine) / (count * power);
}

constexpr capture::KeyCode returnKey = 36;

/// The key of a letter or digit on an American keyboard.
capture::KeyCode keyOf(char letter) {
  constexpr std::string_view letters = "asdfhgzxcv?bqweryt123465=97-80]ou[ip";
  const auto place = letters.find(letter);
  if (place < letters.size()) return static_cast<capture::KeyCode>(place);
  return letter == 'k' ? 40 : 0;
}

class RecordedTake : public testing::Test, public TakeStage {
 protected:
  /// The first event of a kind; a failure when there is none.
  static RecordedEvent first(const package::RecordingProject& project, Kind kind) {
    const auto found = std::ranges::find(project.events, kind, &RecordedEvent::type);
    if (found != project.events.end()) return *found;
    ADD_FAILURE() << "no event of this kind";
    return {};
  }
};

TEST_F(RecordedTake, aScriptedSessionBecomesAPackageAndAMovie) {
  const capture::ShortcutSettings shortcuts{defaults_};
  display_.start({"xterm", "-geometry", "60x20+40+40"});
  ASSERT_TRUE(record({.captureKeyboard = true,
                      .shortcuts = &shortcuts,
                      .captureMicrophone = true,
                      .captureSystemAudio = true,
                      .scope = {CaptureScope::Display{displayID()}},
                      .captureCamera = true}));
  EXPECT_EQ(session().hotkeyWarning(), std::nullopt);
  EXPECT_EQ(session().micWarning(), std::nullopt);
  EXPECT_EQ(session().cameraWarning(), std::nullopt);

  wait(1s);
  const auto square = painter_.open({.x = 840, .y = 300, .width = side, .height = side}, red);
  user_.movePointer({.x = 840 + side / 2.0, .y = 300 + side / 2.0});
  wait(500ms);
  user_.clickButton(1);
  wait(1s);
  user_.type(capture::defaultZoomIn.keyCode, capture::optionModifier);
  ASSERT_TRUE(waitUntil([this] { return session().isZoomedIn(); }));
  wait(2500ms);
  user_.type(capture::defaultZoomOut.keyCode, capture::optionModifier);
  ASSERT_TRUE(waitUntil([this] { return !session().isZoomedIn(); }));
  wait(2500ms);
  painter_.draw(square, {.x = 0, .y = 0, .width = 1, .height = 1}, red);
  wait(100ms);
  ASSERT_TRUE(finish());

  const auto opened = project();
  ASSERT_TRUE(opened);
  const auto& take = *opened;
  EXPECT_TRUE(take.meta.hasSystemAudio);
  EXPECT_TRUE(take.meta.hasMicrophone);
  EXPECT_TRUE(take.meta.hasCamera);
  EXPECT_FALSE(take.meta.interrupted) << take.meta.interruptReason.value_or("");
  EXPECT_EQ(take.meta.captureWidth, width);
  EXPECT_EQ(take.meta.captureHeight, height);
  const auto click = first(take, Kind::click);
  EXPECT_NEAR(*click.x, 900.0 / width, 0.001);
  EXPECT_NEAR(*click.y, 360.0 / height, 0.001);
  const auto zoomIn = first(take, Kind::zoomIn);
  const auto zoomOut = first(take, Kind::zoomOut);
  EXPECT_THAT(zoomIn.t - click.t, Gt(0.9));
  EXPECT_THAT(zoomOut.t - zoomIn.t, Gt(2.4));
  const auto length = media::pictureDuration(take.screenURL());
  ASSERT_TRUE(length);
  EXPECT_NEAR(*length, take.meta.duration.value_or(0), 0.5);

  const auto output = exported();
  ASSERT_TRUE(output);
  const auto& movie = *output;
  const double before = share(movie, click.t + 0.3, isRed);
  const double zoomed = share(movie, zoomOut.t - 0.2, isRed);
  const double after = share(movie, zoomOut.t + 2.2, isRed);
  EXPECT_THAT(before, Gt(4.0));
  EXPECT_THAT(zoomed, Gt(2.5 * before)) << "the picture does not follow the mark";
  EXPECT_NEAR(after, before, 0.3 * before);
  EXPECT_THAT(share(movie, click.t, isGreen), Gt(4.0)) << "the camera is not in the picture";

  ASSERT_EQ(media::soundTrackCount(movie), 2);
  const auto system = media::played(movie, 0);
  const auto voice = media::played(movie, 1);
  EXPECT_THAT(purity(system, 2, 5, playedTone), Gt(0.95));
  EXPECT_THAT(purity(voice, 2, 5, spokenTone), Gt(0.95));
}

TEST_F(RecordedTake, aWindowIsRecordedWhateverCoversIt) {
  const auto window = painter_.open({.x = 200, .y = 150, .width = 400, .height = 300}, red);
  painter_.open({.x = 300, .y = 150, .width = 400, .height = 300}, 0x10E010);
  ASSERT_TRUE(record({.scope = {CaptureScope::Window{window}}}));
  wait(500ms);
  user_.movePointer({.x = 300, .y = 300});
  user_.clickButton(1);
  painter_.draw(window, {.x = 0, .y = 0, .width = 10, .height = 10}, 0x1010E0);
  wait(1s);
  ASSERT_TRUE(finish());
  const auto opened = project();
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->meta.captureWidth, 400);
  EXPECT_EQ(opened->meta.captureHeight, 300);
  EXPECT_EQ(opened->meta.scope, CaptureScope(CaptureScope::Window{window}));
  const auto click = first(*opened, Kind::click);
  EXPECT_NEAR(*click.x, 0.25, 0.003);
  EXPECT_NEAR(*click.y, 0.5, 0.004);
  EXPECT_THAT(share(opened->screenURL(), click.t, isRed), Gt(990));
}

TEST_F(RecordedTake, aPasswordIsWrittenNowhere) {
  auto& input = *stage_->backends().input;
  display_.start({"xterm", "-geometry", "60x20+40+40"});
  const package::LogCapture events{package::LogCategory::events};
  const package::LogCapture session{package::LogCategory::session};
  ASSERT_TRUE(record({.captureKeyboard = true, .scope = {CaptureScope::Display{displayID()}}}));
  wait(500ms);
  user_.type(keyOf('a'), 0);
  wait(1s);  // a key of the last half second before a password field goes unwritten
  display_.start({"zenity", "--password"});
  ASSERT_TRUE(waitUntil([&] { return input.isSecureInput(); }));
  wait(300ms);
  const std::string canary = "vq7xk";
  for (const char letter : canary) user_.type(keyOf(letter), 0);
  wait(300ms);
  user_.type(returnKey, 0);
  ASSERT_TRUE(waitUntil([&] { return !input.isSecureInput(); }));
  wait(700ms);
  user_.type(keyOf('b'), 0);
  wait(300ms);
  ASSERT_TRUE(finish());

  const auto opened = project();
  ASSERT_TRUE(opened);
  std::string typed;
  std::string gaps;
  for (const auto& event : opened->events) {
    if (event.type == Kind::key) typed += event.combo.value_or("?");
    if (event.type == Kind::gap) gaps += event.reason.value_or("?") + " ";
  }
  EXPECT_EQ(typed, "AB");
  EXPECT_EQ(gaps, "secureInputBegan secureInputEnded ");
  for (const auto& file : std::filesystem::directory_iterator(opened->url)) {
    EXPECT_THAT(media::bytesOf(file.path()), testing::Not(testing::HasSubstr(canary)));
  }
  for (const auto& log : {events.text(), session.text()}) {
    EXPECT_THAT(log, testing::Not(testing::HasSubstr(canary)));
  }
}

TEST_F(RecordedTake, aDisplayServerThatDiesEndsTheTakeWithAPackageThatOpens) {
  ASSERT_TRUE(record({.scope = {CaptureScope::Display{displayID()}}}));
  painter_.open({.x = 0, .y = 0, .width = 100, .height = 100}, red);
  wait(1s);
  display_.kill();
  ASSERT_TRUE(waitUntil([this] { return isFinished(); }));
  const auto opened = project();
  ASSERT_TRUE(opened);
  const auto& take = *opened;
  EXPECT_TRUE(take.meta.interrupted);
  EXPECT_THAT(take.meta.interruptReason.value_or(""), testing::StartsWith("屏幕捕获意外停止："));
  EXPECT_TRUE(media::VideoReader::open(take.screenURL()));
}

TEST_F(RecordedTake, aSoundServerThatDiesLeavesTheTakeWithAReason) {
  ASSERT_TRUE(record({.captureMicrophone = true,
                      .captureSystemAudio = true,
                      .scope = {CaptureScope::Display{displayID()}}}));
  wait(1s);
  soundServer_.kill();
  ASSERT_TRUE(waitUntil([this] { return isFinished(); }));
  const auto opened = project();
  ASSERT_TRUE(opened);
  const auto& take = *opened;
  EXPECT_TRUE(take.meta.interrupted);
  // Whether the microphone has noticed too by the time the take ends is up to chance.
  EXPECT_THAT(take.meta.interruptReason.value_or(""),
              testing::HasSubstr("与 PipeWire 服务的连接已断开"));
  EXPECT_TRUE(media::VideoReader::open(take.screenURL()));
}

TEST_F(RecordedTake, aMicrophoneThatIsUnpluggedCostsTheTakeOnlyItsVoice) {
  ASSERT_TRUE(record({.captureMicrophone = true, .scope = {CaptureScope::Display{displayID()}}}));
  wait(1s);
  microphone_.reset();
  wait(1s);
  ASSERT_TRUE(std::holds_alternative<capture::state::Recording>(session().state()));
  ASSERT_TRUE(finish());
  EXPECT_TRUE(project()->meta.hasMicrophone);
}

}  // namespace
}  // namespace vesk::take
