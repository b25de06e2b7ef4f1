#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <mutex>
#include <utility>
#include <variant>
#include <vector>

#include "capture/PointerSampler.h"
#include "capture/contract/ScreenSourceContract.h"
#include "capture/fake/FakePicture.h"
#include "capture/fake/FakeScreenSource.h"

namespace vesk::capture {
namespace {

using namespace std::chrono_literals;
using fake::FakePicture;
using fake::FakeScreenSource;

/// A screen that ticks by itself over the fake, which then behaves as a real one.
class LiveScreen final : public ScreenSource {
 public:
  std::expected<std::unique_ptr<Listening>, BackendError> stream(const ScreenRequest& request,
                                                                 OnFrame onFrame,
                                                                 OnEnd onEnd) override {
    const std::scoped_lock lock{mutex_};
    const auto* window = std::get_if<ScreenRequest::Window>(&request.subject);
    if (window != nullptr && !windows_.contains(window->id)) {
      return std::unexpected(BackendError{"窗口已关闭"});
    }
    isNew_ = true;
    return fake_.stream(request, std::move(onFrame), std::move(onEnd));
  }

  void draw(std::uint32_t colour) {
    const std::scoped_lock lock{mutex_};
    areaColour_ = colour;
    isNew_ = true;
  }
  std::uint32_t open(std::uint32_t colour) {
    const std::scoped_lock lock{mutex_};
    windows_[++lastWindow_] = colour;
    return lastWindow_;
  }
  void close(std::uint32_t id) {
    const std::scoped_lock lock{mutex_};
    windows_.erase(id);
  }

 private:
  void tick(double now) {
    const std::scoped_lock lock{mutex_};
    const auto request = fake_.lastRequest();
    if (!request || now - lastFrame_ < 1.0 / request->fps) return;
    lastFrame_ = now;
    const auto stamp =
        std::chrono::duration_cast<media::HostTime>(std::chrono::duration<double>{now});
    if (std::exchange(isNew_, false)) {
      fake_.show(stamp, colourOf(*request));
    } else {
      fake_.rest(stamp);
    }
  }

  std::uint32_t colourOf(const ScreenRequest& request) {
    const auto* window = std::get_if<ScreenRequest::Window>(&request.subject);
    return window == nullptr ? areaColour_ : windows_[window->id];
  }

  std::mutex mutex_;
  FakeScreenSource fake_;
  std::uint32_t areaColour_ = 0;
  std::map<std::uint32_t, std::uint32_t> windows_;
  std::uint32_t lastWindow_ = 0;
  bool isNew_ = false;
  double lastFrame_ = 0;
  PointerSampler ticker_{[this](double now) { tick(now); }};
};

class FakeScreenRig {
 public:
  ScreenSource& source() { return screen_; }
  package::Rect area() const { return {.x = 100, .y = 50, .width = 64, .height = 64}; }
  void draw(std::uint32_t colour) { screen_.draw(colour); }
  void coverAreaWithOwnWindow(std::uint32_t /*colour*/) {}
  contract::OpenedWindow openWindow(std::uint32_t colour) {
    return {.id = screen_.open(colour), .size = {.width = 80, .height = 64}};
  }
  void coverWindow(std::uint32_t /*id*/, std::uint32_t colour) { screen_.open(colour); }
  void closeWindow(std::uint32_t id) { screen_.close(id); }

 private:
  LiveScreen screen_;
};

struct Streamed {
  std::vector<contract::SeenFrame> frames;
  std::vector<ScreenStreamEnd> ends;

  auto from(ScreenSource& source, const ScreenRequest& request) {
    return source.stream(
        request, [this](const ScreenFrame& frame) { frames.push_back(contract::seen(frame)); },
        [this](const ScreenStreamEnd& end) { ends.push_back(end); });
  }
};

const ScreenRequest smallArea{.subject = ScreenRequest::Area{{0, 0, 8, 6}},
                              .size = {.width = 8, .height = 6}};

TEST(FakeScreenSource, framesArriveWithTheirStampsAndPixels) {
  FakeScreenSource source;
  Streamed streamed;
  const auto stream = streamed.from(source, smallArea);
  source.show(5ms, 0x112233);
  source.rest(7ms);
  FakePicture picture{{.width = 4, .height = 2}, 0xFFFFFF};
  picture.fill({.x = 2, .y = 0, .width = 9, .height = 9}, 0x0000AA);
  source.deliver({.status = ScreenFrame::Status::complete,
                  .stamp = 9ms,
                  .contentRect = std::nullopt,
                  .pixels = picture.view()});
  ASSERT_EQ(streamed.frames.size(), 3U);
  EXPECT_EQ(streamed.frames[0].centre, 0x112233U);
  EXPECT_EQ(streamed.frames[0].size, smallArea.size);
  EXPECT_EQ(streamed.frames[1].status, ScreenFrame::Status::idle);
  EXPECT_EQ(streamed.frames[1].stamp, 7ms);
  EXPECT_EQ(streamed.frames[2].centre, 0x0000AAU);
}

TEST(FakeScreenSource, nothingComesAfterAnEnd) {
  FakeScreenSource source;
  Streamed streamed;
  const auto stream = streamed.from(source, smallArea);
  const ScreenStreamEnd end{.cause = ScreenStreamEnd::Cause::resources, .message = "内存不足"};
  source.end(end);
  source.end(end);
  source.show(1ms);
  EXPECT_EQ(streamed.ends, std::vector{end});
  EXPECT_TRUE(streamed.frames.empty());
}

TEST(FakeScreenSource, itCountsThoseWhoListenAndRemembersWhatTheyAskedFor) {
  FakeScreenSource source;
  Streamed streamed;
  auto stream = streamed.from(source, smallArea);
  EXPECT_EQ(source.openCount(), 1);
  EXPECT_EQ(source.lastRequest(), smallArea);
  stream->reset();
  EXPECT_EQ(source.openCount(), 0);
}

TEST(FakeScreenSource, itFailsUntilItIsToldNotTo) {
  FakeScreenSource source;
  Streamed streamed;
  source.fail(BackendError{"显示服务器已断开"});
  EXPECT_EQ(streamed.from(source, smallArea).error().message, "显示服务器已断开");
  source.fail(std::nullopt);
  EXPECT_TRUE(streamed.from(source, smallArea).has_value());
}

}  // namespace

namespace contract {
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ScreenSourceContract, FakeScreenRig);
}  // namespace contract

}  // namespace vesk::capture
