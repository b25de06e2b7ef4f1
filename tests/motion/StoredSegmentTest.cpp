#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "motion/StoredSegment.h"
#include "package/EditDocumentCoding.h"

namespace vesk::motion {
namespace {

using package::EditDocument;

/// Any segment, positions included, of finite numbers.
class RandomSegments {
 public:
  explicit RandomSegments(std::uint64_t seed) : bits_(seed) {}

  ZoomSegment next() {
    ZoomSegment segment;
    segment.id = "seg_" + std::to_string(bits_());
    for (double* field : {&segment.start, &segment.end, &segment.level, &segment.deadzone,
                          &segment.followSpeed, &segment.easeIn, &segment.easeOut, &segment.holdMin,
                          &segment.motionBlur, &segment.panDuration}) {
      *field = number();
    }
    for (bool* field : {&segment.enabled, &segment.followCursor, &segment.isManual,
                        &segment.endsWithExplicitReset}) {
      *field = flip();
    }
    if (flip()) {
      segment.sourceClickTime = number();
    }
    segment.focus = position();
    while (flip()) {
      segment.waypoints.push_back({.t = number(), .focus = position()});
    }
    return segment;
  }

 private:
  bool flip() { return bits_() % 2 == 0; }

  double number() {
    const auto value = std::bit_cast<double>(bits_());
    return std::isfinite(value) ? value : 1;
  }

  float single() {
    const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(bits_()));
    return std::isfinite(value) ? value : 1;
  }

  glm::vec2 position() {
    const float x = single();
    return {x, single()};
  }

  std::mt19937_64 bits_;
};

}  // namespace

TEST(StoredSegment, everySegmentSurvivesItsStoredForm) {
  RandomSegments segments(1);
  for (int i = 0; i < 1000; ++i) {
    const ZoomSegment segment = segments.next();
    EXPECT_EQ(zoomSegment(storedSegment(segment)), segment);
  }
}

TEST(StoredSegment, everySegmentSurvivesTheFile) {
  RandomSegments segments(2);
  EditDocument document;
  document.segments.emplace();
  std::vector<ZoomSegment> written;
  for (int i = 0; i < 200; ++i) {
    written.push_back(segments.next());
    document.segments->push_back(storedSegment(written.back()));
  }
  const auto text = package::encodeEditDocument(document);
  ASSERT_TRUE(text);
  const auto read = package::decodeEditDocument(*text);
  ASSERT_TRUE(read);
  ASSERT_EQ(read->segments.value().size(), written.size());
  for (std::size_t i = 0; i < written.size(); ++i) {
    EXPECT_EQ(zoomSegment(read->segments->at(i)), written[i]);
  }
}

TEST(StoredSegment, theDefaultsOfBothFormsAreTheSame) {
  EXPECT_EQ(storedSegment(ZoomSegment()), EditDocument::Segment());
  EXPECT_EQ(zoomSegment(EditDocument::Segment()), ZoomSegment());
}

TEST(StoredSegment, positionsPassToSinglePrecision) {
  EditDocument::Segment stored;
  stored.focusX = 0.1;
  stored.focusY = 0.7;
  stored.waypoints = {{.t = 0.1, .x = 0.3, .y = 0.9}};
  const ZoomSegment segment = zoomSegment(stored);
  EXPECT_EQ(segment.focus, glm::vec2(0.1F, 0.7F));
  EXPECT_EQ(segment.waypoints.at(0).focus, glm::vec2(0.3F, 0.9F));
  EXPECT_EQ(segment.waypoints.at(0).t, 0.1);
  EXPECT_EQ(storedSegment(segment).focusX, static_cast<double>(0.1F));
}

TEST(StoredSegment, aPositionBeyondSinglePrecisionStaysFinite) {
  EditDocument::Segment stored;
  stored.focusX = 1e300;
  stored.focusY = -1e300;
  constexpr float largest = std::numeric_limits<float>::max();
  EXPECT_EQ(zoomSegment(stored).focus, glm::vec2(largest, -largest));
}

TEST(StoredSegment, sensitivitiesAreKnownByTheirRawValues) {
  for (const Sensitivity each : allSensitivities) {
    EXPECT_EQ(sensitivityNamed(rawValue(each)), each);
  }
  for (const char* raw : {"", "很高", "保守 ", "standard"}) {
    EXPECT_EQ(sensitivityNamed(raw), Sensitivity::standard);
  }
  EXPECT_EQ(rawValue(Sensitivity::standard), EditDocument().sensitivity);
}

TEST(StoredSegment, curvesAreKnownByTheirRawValues) {
  for (const CameraEase each : allCameraEases) {
    EXPECT_EQ(cameraEaseNamed(rawValue(each)), each);
  }
  for (const char* raw : {"", "弹跳", "smooth"}) {
    EXPECT_EQ(cameraEaseNamed(raw), CameraEase::smooth);
  }
  EXPECT_EQ(rawValue(CameraEase::smooth), EditDocument().transitionEase);
}

}  // namespace vesk::motion
