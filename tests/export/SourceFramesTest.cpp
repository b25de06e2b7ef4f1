#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "export/SourceFrames.h"

namespace vesk::exporting {
namespace {

using Outcome = std::expected<std::optional<media::VideoFrame>, media::MediaError>;

/// Hands out pictures with these stamps, each of them known by its index.
class StampedPictures {
 public:
  explicit StampedPictures(std::vector<double> stamps) : stamps_(std::move(stamps)) {}

  Outcome operator()() {
    if (next_ == stamps_.size()) return std::nullopt;
    media::VideoFrame frame;
    frame.pts = stamps_[next_];
    frame.storage = std::make_shared<const std::size_t>(next_++);
    return frame;
  }

 private:
  std::vector<double> stamps_;
  std::size_t next_ = 0;
};

constexpr int none = -1;

int indexOf(const Outcome& outcome) {
  if (!outcome || !outcome->has_value()) return none;
  return static_cast<int>(*static_cast<const std::size_t*>((*outcome)->storage.get()));
}

std::vector<int> held(const std::vector<double>& stamps, int fps, int frames) {
  SourceFrames source{StampedPictures(stamps)};
  std::vector<int> indices;
  indices.reserve(static_cast<std::size_t>(frames));
  for (int frame = 0; frame < frames; ++frame) {
    indices.push_back(indexOf(source.at(static_cast<double>(frame) / fps)));
  }
  return indices;
}

/// The rule as it is told: of all pictures, walked in order, the last that is not yet to come.
std::vector<int> heldByTheRule(const std::vector<double>& stamps, int fps, int frames) {
  std::vector<int> indices;
  std::size_t pending = 0;
  int now = none;
  for (int frame = 0; frame < frames; ++frame) {
    const double target = static_cast<double>(frame) / fps + 0.000001;
    while (pending < stamps.size()) {
      const double sinceFirst = stamps[pending] - stamps[0];
      if (sinceFirst >= 0 && sinceFirst > target) break;
      now = static_cast<int>(pending++);
    }
    indices.push_back(now);
  }
  return indices;
}

using Indices = std::vector<int>;

TEST(SourceFrames, aPictureOnTheGridBelongsToItsOwnFrame) {
  EXPECT_EQ(held({0.0, 1.0 / 60, 2.0 / 60, 3.0 / 60}, 60, 4), (Indices{0, 1, 2, 3}));
}

TEST(SourceFrames, aPictureUpToAMicrosecondLateStillCounts) {
  EXPECT_EQ(held({0.0, 0.1 + 0.9e-6}, 10, 2), (Indices{0, 1}));
  EXPECT_EQ(held({0.0, 0.1 + 1.1e-6}, 10, 3), (Indices{0, 0, 1}));
}

TEST(SourceFrames, stampsOfACoarseClockFallOnTheirGrid) {
  // 60 frames a second in thousandths of a second: never more than half of one late.
  std::vector<double> stamps;
  Indices own;
  for (int frame = 0; frame < 600; ++frame) {
    stamps.push_back(std::floor(frame * 1000 / 60.0) / 1000);
    own.push_back(frame);
  }
  EXPECT_EQ(held(stamps, 60, 600), own);
}

TEST(SourceFrames, timesCountFromTheFirstPicture) {
  EXPECT_EQ(held({100.0, 100.25, 100.5}, 4, 4), (Indices{0, 1, 2, 2}));
}

TEST(SourceFrames, aStillScreenKeepsItsOnlyPicture) {
  EXPECT_EQ(held({7.5}, 30, 5), (Indices{0, 0, 0, 0, 0}));
}

TEST(SourceFrames, aStillStretchRepeatsItsPicture) {
  EXPECT_EQ(held({0.0, 0.1, 0.9}, 10, 11), (Indices{0, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2}));
}

TEST(SourceFrames, aDenseStretchDropsPictures) {
  EXPECT_EQ(held({0.0, 0.01, 0.02, 0.05, 0.1, 0.11, 0.19}, 10, 3), (Indices{0, 4, 6}));
}

TEST(SourceFrames, withoutAPictureNothingStands) {
  EXPECT_EQ(held({}, 60, 3), (Indices{none, none, none}));
}

TEST(SourceFrames, ofEqualStampsTheLastStands) {
  EXPECT_EQ(held({2.0, 2.0, 2.0, 2.1}, 10, 2), (Indices{2, 3}));
}

TEST(SourceFrames, aPictureBeforeTheFirstOneIsTakenAtOnce) {
  EXPECT_EQ(held({5.0, 4.0, 5.5}, 10, 6), (Indices{1, 1, 1, 1, 1, 2}));
}

TEST(SourceFrames, readsNoFurtherThanThePictureThatIsStillToCome) {
  int reads = 0;
  SourceFrames source([&, pictures = StampedPictures({0, 1, 2, 3, 4})]() mutable {
    ++reads;
    return pictures();
  });
  EXPECT_EQ(reads, 0);
  EXPECT_EQ(indexOf(source.at(0.5)), 0);
  EXPECT_EQ(reads, 2);
  EXPECT_EQ(indexOf(source.at(0.9)), 0);
  EXPECT_EQ(reads, 2);
}

TEST(SourceFrames, aFailureToReadComesOut) {
  const media::MediaError broken{media::MediaError::Kind::decodeFailed, "画面已损坏"};
  SourceFrames source([&, pictures = StampedPictures({0, 1})]() mutable -> Outcome {
    Outcome picture = pictures();
    if (picture && !picture->has_value()) return std::unexpected(broken);
    return picture;
  });
  EXPECT_EQ(indexOf(source.at(0)), 0);
  const Outcome second = source.at(1);
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error(), broken);
}

/// Stamps as a recorder leaves them: runs of frames on and off the grid, bursts and pauses.
std::vector<double> randomStamps(std::mt19937& random, int fps) {
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<double> stamps;
  double time = unit(random) < 0.5 ? 0.0 : unit(random) * 1e5;
  const double start = time;
  for (int count = 0; count < 200; ++count) {
    stamps.push_back(time);
    const double kind = unit(random);
    if (kind < 0.35) {
      time += 1.0 / fps;
    } else if (kind < 0.5) {
      time = start + std::ceil((time - start) * fps) / fps + (unit(random) - 0.5) * 4e-6;
      time = std::max(time, stamps.back());
    } else if (kind < 0.8) {
      time += unit(random) * 0.3 / fps;
    } else if (kind < 0.9) {
      time += unit(random) * 10 / fps;
    }  // else the same stamp once more
  }
  return stamps;
}

TEST(SourceFrames, randomStampsFollowTheRule) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 400; ++round) {
    const int fps = std::array{24, 30, 60, 120}.at(static_cast<std::size_t>(round) % 4);
    const std::vector<double> stamps = randomStamps(random, fps);
    constexpr int frames = 300;
    ASSERT_EQ(held(stamps, fps, frames), heldByTheRule(stamps, fps, frames)) << "round " << round;
  }
}

}  // namespace
}  // namespace vesk::exporting
