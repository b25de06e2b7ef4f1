#include <gtest/gtest.h>

#include "capture/x11/ScreenStage.h"

namespace vesk::capture::x11::test {
namespace {

using media::PixelRect;
using Process = PaintingClient::Process;
using Status = ScreenFrame::Status;

constexpr std::uint32_t red = 0xC02010;
constexpr std::uint32_t green = 0x10B040;
constexpr std::uint32_t blue = 0x2040D0;
constexpr std::uint32_t grey = 0x808080;
constexpr std::uint32_t opaque = 0xFF000000;

ScreenRequest areaRequest(const PixelRect& rect, int fps = 60) {
  return {.subject = ScreenRequest::Area{{.x = static_cast<double>(rect.x),
                                          .y = static_cast<double>(rect.y),
                                          .width = static_cast<double>(rect.width),
                                          .height = static_cast<double>(rect.height)}},
          .size = {.width = rect.width, .height = rect.height},
          .fps = fps};
}

/// A screen of 320×240 with a grey background, a source, and another program.
class AreaStream : public ::testing::Test {
 protected:
  explicit AreaStream(std::vector<std::string> serverArguments = {})
      : display_{{.width = 320, .height = 240, .arguments = std::move(serverArguments)}},
        other_{display_.name(), Process::another} {
    other_.setBackground(grey);
    auto source = X11ScreenSource::open(display_.name());
    if (!source) throw std::runtime_error(source.error().message);
    source_ = std::move(*source);
  }

  static constexpr PixelRect whole{.width = 320, .height = 240};

  TestDisplay display_;
  PaintingClient other_;
  std::unique_ptr<X11ScreenSource> source_;
};

TEST_F(AreaStream, showsEveryPixelOfTheScreen) {
  other_.open({.x = 10, .y = 20, .width = 30, .height = 40}, red);
  const Watched stream{*source_, areaRequest(whole)};
  ASSERT_TRUE(stream.shows(10, 20, red));
  const KeptFrame frame = stream.picture();
  ASSERT_EQ(frame.size, (PixelSize{320, 240}));
  for (int y = 0; y < 240; ++y) {
    for (int x = 0; x < 320; ++x) {
      const bool isInside = x >= 10 && x < 40 && y >= 20 && y < 60;
      ASSERT_EQ(frame.at(x, y), opaque | (isInside ? red : grey)) << x << ", " << y;
    }
  }
  EXPECT_EQ(frame.contentRect, (package::Rect{0, 0, 320, 240}));
}

TEST_F(AreaStream, aRegionBeginsAtOddPlacesAsWell) {
  const auto window = other_.open({.x = 101, .y = 51, .width = 40, .height = 40}, red);
  other_.draw(window, {.x = 0, .y = 0, .width = 1, .height = 1}, blue);
  const Watched stream{*source_, areaRequest({.x = 97, .y = 49, .width = 50, .height = 30})};
  const KeptFrame frame = stream.picture();
  EXPECT_EQ(frame.at(4, 2), opaque | blue);
  EXPECT_EQ(frame.at(3, 2), opaque | grey);
  EXPECT_EQ(frame.at(4, 1), opaque | grey);
  EXPECT_EQ(frame.at(5, 2), opaque | red);
  EXPECT_EQ(frame.at(43, 29), opaque | red);
  EXPECT_EQ(frame.at(44, 29), opaque | grey);
}

TEST_F(AreaStream, isBlackBeyondTheScreensEdge) {
  const Watched stream{*source_, areaRequest({.x = 300, .y = -10, .width = 40, .height = 30})};
  const KeptFrame frame = stream.picture();
  EXPECT_EQ(frame.at(0, 10), opaque | grey);
  EXPECT_EQ(frame.at(19, 29), opaque | grey);
  EXPECT_EQ(frame.at(20, 10), opaque);
  EXPECT_EQ(frame.at(0, 9), opaque);
  const auto mark = stream.mark();
  other_.drawOnScreen(whole, green);
  EXPECT_TRUE(stream.shows(19, 29, green, mark));
  EXPECT_EQ(stream.picture().at(20, 10), opaque);
}

TEST_F(AreaStream, anAreaWhollyBeyondTheScreenIsBlack) {
  const Watched stream{*source_, areaRequest({.x = 400, .y = 400, .width = 20, .height = 20})};
  EXPECT_EQ(stream.picture().at(10, 10), opaque);
  EXPECT_TRUE(stream.comesToRest());
}

TEST_F(AreaStream, isIdleWhileNothingIsDrawnInside) {
  const Watched stream{*source_, areaRequest({.x = 0, .y = 0, .width = 100, .height = 100})};
  ASSERT_TRUE(stream.comesToRest());
  const auto mark = stream.mark();
  const auto window = other_.open({.x = 100, .y = 0, .width = 50, .height = 50}, red);
  for (int i = 0; i < 5; ++i) other_.draw(window, {.width = 50, .height = 50}, blue);
  (void)stream.next(5);
  EXPECT_EQ(completeCount(stream.since(mark)), 0U);

  other_.drawOnScreen({.x = 99, .y = 99, .width = 1, .height = 1}, green);
  EXPECT_TRUE(stream.shows(99, 99, green, mark));
  EXPECT_TRUE(stream.comesToRest());
}

TEST_F(AreaStream, keepsTheRestWhereOnlyAPartIsDrawn) {
  const Watched stream{*source_, areaRequest(whole)};
  const auto mark = stream.mark();
  other_.drawOnScreen({.x = 50, .y = 60, .width = 7, .height = 3}, green);
  ASSERT_TRUE(stream.shows(50, 60, green, mark));
  const KeptFrame frame = stream.picture();
  EXPECT_EQ(frame.at(56, 62), opaque | green);
  EXPECT_EQ(frame.at(57, 62), opaque | grey);
  EXPECT_EQ(frame.at(49, 60), opaque | grey);
  EXPECT_EQ(frame.at(50, 63), opaque | grey);
  EXPECT_EQ(frame.at(0, 0), opaque | grey);
}

TEST_F(AreaStream, aPointerThatMovesIsNeitherSeenNorNew) {
  const Watched stream{*source_, areaRequest(whole)};
  ASSERT_TRUE(stream.comesToRest());
  const auto mark = stream.mark();
  ASSERT_EQ(display_.run({"xdotool", "mousemove", "100", "100"}), 0);
  (void)stream.next(5);
  EXPECT_EQ(completeCount(stream.since(mark)), 0U);
}

TEST_F(AreaStream, keepsThePaceThatWasAskedFor) {
  const Watched stream{*source_, areaRequest(whole, 60)};
  (void)stream.next(5);
  const auto frames = stream.next(61);
  const std::chrono::duration<double> span = frames.back().stamp - frames.front().stamp;
  EXPECT_NEAR(span.count(), 1.0, 0.05);
  for (std::size_t i = 1; i < frames.size(); ++i) {
    EXPECT_GT(frames[i].stamp, frames[i - 1].stamp);
  }
}

TEST_F(AreaStream, aServerThatDiesEndsItOnce) {
  const Watched stream{*source_, areaRequest(whole)};
  display_.kill();
  ASSERT_TRUE(stream.ends().comesTo(1));
  const auto mark = stream.mark();
  std::this_thread::sleep_for(std::chrono::milliseconds{100});
  EXPECT_EQ(stream.mark(), mark);
  EXPECT_EQ(stream.ends().all(),
            (std::vector<ScreenStreamEnd>{
                {.cause = ScreenStreamEnd::Cause::other, .message = "与显示服务器的连接已断开"}}));
  EXPECT_FALSE(source_->stream(areaRequest(whole), [](const auto&) {}, [](const auto&) {}));
}

TEST_F(AreaStream, isEndedAtOnceThoughTheServerStandsStill) {
  Watched stream{*source_, areaRequest(whole)};
  other_.drawOnScreen(whole, red);
  display_.freeze();
  std::this_thread::sleep_for(std::chrono::milliseconds{50});
  const auto begin = std::chrono::steady_clock::now();
  stream.end();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds{1});
  EXPECT_EQ(stream.ends().count(), 0U);
}

TEST_F(AreaStream, aSlowStreamIsEndedAtOnce) {
  Watched stream{*source_, areaRequest(whole, 1)};
  const auto begin = std::chrono::steady_clock::now();
  stream.end();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{500});
}

TEST_F(AreaStream, outlivesItsSource) {
  const Watched stream{*source_, areaRequest(whole)};
  source_.reset();
  const auto mark = stream.mark();
  other_.drawOnScreen(whole, green);
  EXPECT_TRUE(stream.shows(5, 5, green, mark));
}

TEST_F(AreaStream, asksForAnAreaWithPixels) {
  auto request = areaRequest(whole);
  request.size = {.width = 0, .height = 10};
  EXPECT_FALSE(source_->stream(request, [](const auto&) {}, [](const auto&) {}));
}

class AreaStreamWithoutSharedMemory : public AreaStream {
 protected:
  AreaStreamWithoutSharedMemory() : AreaStream{{"-extension", "MIT-SHM"}} {}
};

TEST_F(AreaStreamWithoutSharedMemory, showsTheSame) {
  other_.open({.x = 10, .y = 20, .width = 30, .height = 40}, red);
  const Watched stream{*source_, areaRequest(whole)};
  ASSERT_TRUE(stream.shows(10, 20, red));
  EXPECT_EQ(stream.picture().at(39, 59), opaque | red);
  EXPECT_EQ(stream.picture().at(40, 59), opaque | grey);
}

}  // namespace
}  // namespace vesk::capture::x11::test
