#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "capture/x11/ScreenStage.h"

namespace vesk::capture::x11::test {
namespace {

using media::PixelRect;
using Process = PaintingClient::Process;

constexpr std::uint32_t red = 0xC02010;
constexpr std::uint32_t green = 0x10B040;
constexpr std::uint32_t blue = 0x2040D0;
constexpr std::uint32_t opaque = 0xFF000000;
constexpr PixelRect place{.x = 21, .y = 33, .width = 100, .height = 80};

/// A screen of 640×480, a source and another program.
class WindowStream : public ::testing::Test {
 protected:
  WindowStream() : source_{std::move(X11ScreenSource::open(display_.name()).value())} {}

  std::unique_ptr<Watched> watch(std::uint32_t window, PixelSize size) {
    return std::make_unique<Watched>(
        *source_, ScreenRequest{.subject = ScreenRequest::Window{window}, .size = size});
  }

  TestDisplay display_;
  PaintingClient other_{display_.name(), Process::another};
  std::unique_ptr<X11ScreenSource> source_;
};

TEST_F(WindowStream, aCoveredWindowIsSeenWhole) {
  const auto window = other_.open(place, red);
  other_.draw(window, {.x = 99, .y = 79, .width = 1, .height = 1}, green);
  other_.open({.x = 0, .y = 0, .width = 300, .height = 300}, blue);
  const auto stream = watch(window, {.width = 100, .height = 80});
  const KeptFrame frame = stream->picture();
  for (int y = 0; y < 80; ++y) {
    for (int x = 0; x < 100; ++x) {
      const bool isCorner = x == 99 && y == 79;
      ASSERT_EQ(frame.at(x, y), opaque | (isCorner ? green : red)) << x << ", " << y;
    }
  }
  EXPECT_EQ(frame.contentRect, (package::Rect{0, 0, 100, 80}));
  const auto mark = stream->mark();
  other_.draw(window, {.x = 3, .y = 4, .width = 2, .height = 2}, blue);
  ASSERT_TRUE(stream->shows(3, 4, blue, mark));
  EXPECT_EQ(stream->picture().at(5, 5), opaque | red);
}

TEST_F(WindowStream, isIdleWhileOnlyOthersDraw) {
  const auto window = other_.open(place, red);
  const auto stream = watch(window, {.width = 100, .height = 80});
  ASSERT_TRUE(stream->comesToRest());
  const auto mark = stream->mark();
  other_.open({.x = 0, .y = 0, .width = 300, .height = 300}, blue);
  (void)stream->next(5);
  EXPECT_EQ(completeCount(stream->since(mark)), 0U);
}

TEST_F(WindowStream, aLargerWindowIsScaledDownToFit) {
  const auto window = other_.open({.width = 400, .height = 200}, red);
  other_.draw(window, {.x = 200, .y = 0, .width = 200, .height = 200}, green);
  const auto stream = watch(window, {.width = 100, .height = 100});
  const KeptFrame frame = stream->picture();
  EXPECT_EQ(frame.contentRect, (package::Rect{0, 0, 100, 50}));
  EXPECT_EQ(frame.at(0, 0), opaque | red);
  EXPECT_EQ(frame.at(49, 49), opaque | red);
  EXPECT_EQ(frame.at(50, 0), opaque | green);
  EXPECT_EQ(frame.at(99, 49), opaque | green);
  EXPECT_EQ(frame.at(0, 50), opaque);
  EXPECT_EQ(frame.at(99, 99), opaque);
}

TEST_F(WindowStream, aWindowOfOddSizeIsCutByAPixelAndStaysSharp) {
  const auto window = other_.open({.width = 101, .height = 81}, red);
  other_.draw(window, {.x = 50, .y = 40, .width = 1, .height = 1}, green);
  const auto stream = watch(window, {.width = 100, .height = 80});
  const KeptFrame frame = stream->picture();
  EXPECT_EQ(frame.at(50, 40), opaque | green);
  EXPECT_EQ(frame.at(51, 40), opaque | red);
  EXPECT_EQ(frame.at(99, 79), opaque | red);
  EXPECT_EQ(frame.contentRect, (package::Rect{0, 0, 100, 80}));
}

TEST_F(WindowStream, aWindowThatBecomesSmallerLeavesBlack) {
  const auto window = other_.open(place, red);
  const auto stream = watch(window, {.width = 100, .height = 80});
  const auto mark = stream->mark();
  other_.place(window, {.x = 21, .y = 33, .width = 60, .height = 40});
  ASSERT_TRUE(stream->shows(60, 0, 0, mark));
  const KeptFrame frame = stream->picture();
  EXPECT_EQ(frame.contentRect, (package::Rect{0, 0, 60, 40}));
  EXPECT_EQ(frame.at(59, 39), opaque | red);
  EXPECT_EQ(frame.at(59, 40), opaque);
}

TEST_F(WindowStream, aWindowThatBecomesLargerIsScaledFromThenOn) {
  const auto window = other_.open(place, red);
  const auto stream = watch(window, {.width = 100, .height = 80});
  const auto mark = stream->mark();
  other_.place(window, {.x = 21, .y = 33, .width = 200, .height = 80});
  ASSERT_TRUE(stream->shows(0, 40, 0, mark));
  EXPECT_EQ(stream->picture().contentRect, (package::Rect{0, 0, 100, 40}));
  EXPECT_EQ(stream->picture().at(99, 39), opaque | red);
}

TEST_F(WindowStream, whileItIsNotShownItsLastPictureStands) {
  const auto window = other_.open(place, red);
  const auto stream = watch(window, {.width = 100, .height = 80});
  ASSERT_TRUE(stream->comesToRest());
  auto mark = stream->mark();
  other_.hide(window);
  (void)stream->next(5);
  EXPECT_EQ(completeCount(stream->since(mark)), 0U);
  EXPECT_EQ(stream->since(mark).back().contentRect, (package::Rect{0, 0, 100, 80}));
  mark = stream->mark();
  other_.show(window);
  other_.draw(window, {.width = 10, .height = 10}, blue);
  EXPECT_TRUE(stream->shows(5, 5, blue, mark));
}

TEST_F(WindowStream, anUnseenWindowBeginsBlackAndAppearsLater) {
  const auto window = other_.open(place, red);
  other_.hide(window);
  const auto stream = watch(window, {.width = 100, .height = 80});
  EXPECT_EQ(stream->picture().at(5, 5), opaque);
  const auto mark = stream->mark();
  other_.show(window);
  EXPECT_TRUE(stream->shows(5, 5, red, mark));
}

TEST_F(WindowStream, goesOnWithTheLastPictureWhenTheWindowIsClosed) {
  const auto window = other_.open(place, red);
  const auto stream = watch(window, {.width = 100, .height = 80});
  ASSERT_TRUE(stream->comesToRest());
  const auto mark = stream->mark();
  other_.close(window);
  (void)stream->next(10);
  EXPECT_EQ(completeCount(stream->since(mark)), 0U);
  EXPECT_EQ(stream->picture().at(5, 5), opaque | red);
  EXPECT_EQ(stream->ends().count(), 0U);
}

TEST_F(WindowStream, aTranslucentWindowIsSeenOverBlack) {
  const auto window = other_.openBlended(place, 0x80402010);
  const auto stream = watch(window, {.width = 100, .height = 80});
  EXPECT_EQ(stream->picture().at(5, 5), opaque | 0x402010);
}

TEST_F(WindowStream, aWindowHasItsBorder) {
  const auto window = other_.open(place, red, {.border = 2});
  const auto stream = watch(window, {.width = 104, .height = 84});
  auto mark = stream->mark();
  other_.draw(window, {.x = 0, .y = 0, .width = 1, .height = 1}, green);
  ASSERT_TRUE(stream->shows(2, 2, green, mark));
  mark = stream->mark();
  other_.draw(window, {.x = 99, .y = 79, .width = 1, .height = 1}, green);
  ASSERT_TRUE(stream->shows(101, 81, green, mark));
}

TEST_F(WindowStream, thereIsNoneOfTheScreenItselfNorOfWhatIsNoWindow) {
  for (const std::uint32_t id : {0U, 0x7FFFFFU, display_.connection().root()}) {
    const auto stream = source_->stream(
        {.subject = ScreenRequest::Window{id}, .size = {.width = 64, .height = 64}},
        [](const auto&) {}, [](const auto&) {});
    ASSERT_FALSE(stream);
    EXPECT_EQ(stream.error().message, "找不到要录制的窗口，它可能已经关闭");
  }
}

TEST_F(WindowStream, aServerThatDiesEndsIt) {
  const auto window = other_.open(place, red);
  const auto stream = watch(window, {.width = 100, .height = 80});
  display_.kill();
  ASSERT_TRUE(stream->ends().comesTo(1));
  EXPECT_EQ(stream->ends().all().front().cause, ScreenStreamEnd::Cause::other);
}

/// While it lives, nobody in this process can have a file, or memory that is one, of this length.
class ScarceMemory {
 public:
  explicit ScarceMemory(rlim_t bytes) {
    handler_ = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{.rlim_cur = bytes, .rlim_max = before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;
  ~ScarceMemory() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int) = nullptr;
};

TEST_F(WindowStream, endsForLackOfMemoryWhenTheWindowGrowsBeyondIt) {
  const auto window = other_.open(place, red);
  const auto stream = watch(window, {.width = 100, .height = 80});
  const ScarceMemory scarce{200'000};
  other_.place(window, {.width = 500, .height = 400});
  ASSERT_TRUE(stream->ends().comesTo(1));
  EXPECT_EQ(stream->ends().all(),
            (std::vector<ScreenStreamEnd>{{.cause = ScreenStreamEnd::Cause::resources,
                                           .message = "内存不足，无法读取屏幕画面"}}));
}

TEST_F(WindowStream, anAreaForWhichThereIsNoMemoryIsAnError) {
  const ScarceMemory scarce{200'000};
  const auto stream = source_->stream(
      {.subject = ScreenRequest::Area{{.width = 600, .height = 400}},
       .size = {.width = 600, .height = 400}},
      [](const auto&) {}, [](const auto&) {});
  ASSERT_FALSE(stream);
  EXPECT_EQ(stream.error().message, "内存不足，无法读取屏幕画面");
}

/// A screen of 640×480 with openbox, a source and another program.
class ManagedWindowStream : public ::testing::Test {
 protected:
  ManagedWindowStream() : source_{std::move(X11ScreenSource::open(display_.name()).value())} {}

  TestDisplay display_{{.hasWindowManager = true}};
  PaintingClient other_{display_.name(), Process::another};
  std::unique_ptr<X11ScreenSource> source_;
};

TEST_F(ManagedWindowStream, hasTheDecorationAndHoldsThePictureOfAnIcon) {
  const auto window = other_.open(place, red, {.isManaged = true});
  const auto hasFrame = [&] {
    const auto frame =
        display_.connection().number(window, display_.connection().atom("_NET_FRAME_EXTENTS"));
    return frame.has_value();
  };
  ASSERT_TRUE(contract::comesTrue(hasFrame));
  const Watched stream{
      *source_, {.subject = ScreenRequest::Window{window}, .size = {.width = 200, .height = 200}}};
  // The window manager's bar is above the window.
  ASSERT_TRUE(stream.shows(50, 60, red));
  ASSERT_TRUE(stream.comesToRest());
  EXPECT_NE(stream.picture().at(50, 4), opaque | red);
  const auto content = stream.picture().contentRect;
  ASSERT_TRUE(content);
  EXPECT_GT(content->height, 80);

  auto mark = stream.mark();
  other_.iconify(window);
  ASSERT_TRUE(contract::comesTrue([&] {
    return display_.connection().number(window, display_.connection().atom("WM_STATE")) == 3U;
  }));
  (void)stream.next(10);
  EXPECT_EQ(stream.picture().at(50, 60), opaque | red);

  mark = stream.mark();
  other_.show(window);
  ASSERT_TRUE(stream.shows(50, 60, red, mark));
  mark = stream.mark();
  other_.draw(window, {.width = 100, .height = 80}, blue);
  EXPECT_TRUE(stream.shows(50, 60, blue, mark));
}

}  // namespace
}  // namespace vesk::capture::x11::test
