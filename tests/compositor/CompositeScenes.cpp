#include "compositor/CompositeScenes.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "compositor/TestPicture.h"

namespace vesk::compositor::test {
namespace {

constexpr double turn = 2 * std::numbers::pi;

glm::dvec3 waves(glm::dvec2 place, double width) {
  const glm::dvec2 phase = place / width * turn;
  return {0.5 + 0.3 * std::sin(phase.x + 0.4) + 0.1 * std::cos(phase.y),
          0.5 + 0.25 * std::sin(0.8 * phase.y + 0.6 * phase.x),
          0.5 + 0.35 * std::cos(phase.x * 0.7 - phase.y * 1.1)};
}

}  // namespace

package::RecordedEvent moveTo(double t, double x, double y) {
  return {.t = t, .type = package::RecordedEvent::Kind::move, .x = x, .y = y};
}

package::RecordedEvent clickAt(double t, double x, double y) {
  return {.t = t, .type = package::RecordedEvent::Kind::click, .x = x, .y = y};
}

package::RecordingProject makeProject(int width, int height,
                                      std::vector<package::RecordedEvent> events) {
  package::RecordingMeta meta;
  meta.captureWidth = width;
  meta.captureHeight = height;
  meta.scaleFactor = 1;
  meta.duration = 10;
  return package::RecordingProject::make("take.recording", meta, std::move(events));
}

std::shared_ptr<const package::RecordingProject> shared(package::RecordingProject project) {
  return std::make_shared<const package::RecordingProject>(std::move(project));
}

media::VideoFrame smoothPicture(int width, int height) {
  return makeRgbPicture(width, height, [&](glm::dvec2 place) { return waves(place, width); });
}

media::VideoFrame screenPicture(int width, int height) {
  return makeRgbPicture(width, height, [&](glm::dvec2 place) {
    const auto x = static_cast<int>(place.x * 320 / width);
    const auto y = static_cast<int>(place.y * 180 / height);
    if (y < 12) return glm::dvec3(0.15, 0.16, 0.2);
    if (x > 40 && x < 72 && y > 40 && y < 72) return glm::dvec3(((x / 8) + (y / 8)) % 2);
    if (x > 200 && x < 260 && y > 100 && y < 130) return glm::dvec3(0.95, 0.95, 0.9);
    if (x > 205 && x < 250 && y == 140) return glm::dvec3(0.05);
    return waves(place, width);
  });
}

motion::CameraPose flatPose(double framing, glm::vec2 target) {
  motion::CameraPose pose;
  pose.target = target;
  pose.framing = framing;
  return pose;
}

DoubleImage canvasImage(const gpu::Framebuffer& canvas) {
  const auto width = static_cast<std::size_t>(canvas.width());
  const auto height = static_cast<std::size_t>(canvas.height());
  std::vector<std::byte> bytes(width * height * 4);
  canvas.read(bytes.data(), static_cast<std::ptrdiff_t>(width) * 4, canvas.bounds());
  DoubleImage image(canvas.width(), canvas.height());
  for (std::size_t index = 0; index < image.pixels.size(); ++index) {
    const auto channel = [&](std::size_t byte) {
      return static_cast<double>(bytes[index * 4 + byte]) / 255;
    };
    image.pixels[index] = {channel(2), channel(1), channel(0), channel(3)};
  }
  return image;
}

}  // namespace vesk::compositor::test
