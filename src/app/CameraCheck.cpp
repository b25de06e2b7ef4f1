#include "app/CameraCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/mat4x4.hpp>
#include <span>
#include <string>
#include <vector>

#include "motion/CameraPose.h"

namespace vesk::app {
namespace {

using motion::CameraPose;

constexpr double aspect = 16.0 / 9;
constexpr std::array<double, 8> yaws{0, 6, 12, -12, 30, -30, 45, -45};
constexpr std::array<double, 8> pitches{0, 3, 6, -6, 14, -14, 35, -35};
constexpr std::array<double, 4> lenses{18, 28, 45, 65};
constexpr std::array<double, 5> framings{1, 1.5, 2, 4, 6};
constexpr std::array<double, 3> fillFramings{1, 2, 4};

using Failures = std::vector<std::string>;

std::string describe(const CameraPose& pose) {
  return fmt::format("yaw={:g} pitch={:g} fov={:g} framing={:g}", pose.yaw, pose.pitch, pose.fov,
                     pose.framing);
}

/// The largest deviation found and the pose, as asked for, at which it was.
struct Worst {
  double value = 0;
  CameraPose pose;
  void offer(double candidate, const CameraPose& at) {
    // A deviation that is no number is as bad as can be.
    if (!(candidate <= value)) {
      value = candidate;
      pose = at;
    }
  }
};

template <typename Body>
void forEachTilt(Body body) {
  for (const double yaw : yaws) {
    for (const double pitch : pitches) {
      CameraPose pose;
      pose.yaw = yaw;
      pose.pitch = pitch;
      body(pose);
    }
  }
}

template <typename Body>
void forEachPose(std::span<const double> framingValues, Body body) {
  forEachTilt([&](CameraPose pose) {
    for (const double fov : lenses) {
      for (const double framing : framingValues) {
        pose.fov = fov;
        pose.framing = framing;
        body(pose);
      }
    }
  });
}

Failures directionIsUnit() {
  constexpr double distance = 3;
  Worst worst;
  forEachTilt([&](const CameraPose& asked) {
    const CameraPose pose = asked.clamped(aspect);
    const glm::dmat4 view = pose.viewMatrix(distance, aspect);
    const glm::dvec3 eye = -(glm::transpose(glm::dmat3(view)) * glm::dvec3(view[3]));
    const glm::dvec2 target(pose.target);
    const glm::dvec3 lookedAt(aspect * (target.x - 0.5), 0.5 - target.y, 0);
    worst.offer(std::abs(glm::distance(eye, lookedAt) - distance) / distance, asked);
  });
  if (worst.value < 1e-9) {
    return {};
  }
  return {fmt::format("距离最大相对误差 {:.4f}% @ {}", worst.value * 100, describe(worst.pose))};
}

Failures squareOnFills() {
  const auto solved = CameraPose{}.clamped(aspect).solve(aspect, aspect);
  if (!solved) {
    return {"解不出矩阵"};
  }
  const glm::mat4 matrix(motion::projectionMatrix(solved->pose.fov, aspect) *
                         solved->pose.viewMatrix(solved->distance, aspect) *
                         glm::scale(glm::dmat4(1.0), glm::dvec3(aspect, 1, 1)));
  double worst = 0;
  for (const glm::vec2 corner : {glm::vec2{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
    const auto seen = motion::project(corner, matrix);
    if (!seen) {
      return {"解不出矩阵"};
    }
    worst = std::max<double>({worst, std::abs(seen->x - corner.x), std::abs(seen->y - corner.y)});
  }
  if (worst <= 0.0001) {
    return {};
  }
  return {fmt::format("四角最大偏差 {:.6f}", worst)};
}

Failures lensAndFramingAreIndependent() {
  Worst worst;
  for (const double fov : lenses) {
    for (const double framing : framings) {
      CameraPose pose;
      pose.fov = fov;
      pose.framing = framing;
      const auto solved = pose.clamped(aspect).solve(aspect, aspect);
      if (!solved) {
        return {"解不出矩阵"};
      }
      const double focalLength = motion::projectionMatrix(fov, aspect)[1][1];
      worst.offer(std::abs(focalLength / solved->distance / (2 * framing) - 1), pose);
    }
  }
  if (worst.value < 1e-12) {
    return {};
  }
  return {fmt::format("f/d 相对 2·framing 最大偏差 {:.3e}", worst.value)};
}

double largestChange(const CameraPose& a, const CameraPose& b) {
  const glm::dvec2 target = glm::abs(glm::dvec2(a.target) - glm::dvec2(b.target));
  return std::max({target.x, target.y, std::abs(a.yaw - b.yaw), std::abs(a.pitch - b.pitch),
                   std::abs(a.roll - b.roll), std::abs(a.fov - b.fov),
                   std::abs(a.framing - b.framing), std::abs(a.motionBlur - b.motionBlur)});
}

Failures clampingIsIdempotent() {
  Worst worst;
  forEachPose(framings, [&](const CameraPose& pose) {
    const CameraPose once = pose.clamped(aspect);
    worst.offer(largestChange(once, once.clamped(aspect)), pose);
  });
  if (worst.value < 1e-9) {
    return {};
  }
  return {fmt::format("二次钳位最大变化 {:.3e}", worst.value)};
}

Failures frameIsFilled() {
  Worst shortage;  // how far the worst corner lies outside the picture
  forEachPose(fillFramings, [&](const CameraPose& pose) {
    const auto solved = pose.clamped(aspect).solve(aspect, aspect);
    if (!solved) {
      return;  // the next line counts these
    }
    const auto corners = solved->pose.visibleCorners(solved->distance, aspect, aspect);
    shortage.offer(corners ? -motion::margin(*corners) : 1, pose);
  });
  if (shortage.value < 0.0001) {
    return {};
  }
  return {fmt::format("最差余量 {:.6f} @ {}", -shortage.value, describe(shortage.pose))};
}

Failures everyPoseIsSolved() {
  int unsolved = 0;
  forEachPose(fillFramings, [&](const CameraPose& pose) {
    unsolved += pose.clamped(aspect).solve(aspect, aspect) ? 0 : 1;
  });
  if (unsolved == 0) {
    return {};
  }
  return {fmt::format("{} 组机位解不出", unsolved)};
}

Failures pictureIsNotStretched(const PictureLayout& layout) {
  struct Canvas {
    int width;
    int height;
  };
  constexpr std::array<Canvas, 5> canvases{
      {{1920, 1080}, {2560, 1440}, {1080, 1080}, {1000, 800}, {1400, 600}}};
  if (!layout) {
    return {"Metal 或合成素材不可用"};
  }
  Failures failures;
  for (const auto& [width, height] : canvases) {
    for (const bool framed : {false, true}) {
      const auto rect = layout(width, height, framed);
      if (!rect) {
        return {"Metal 或合成素材不可用"};
      }
      const double deviation = std::abs(rect->width / rect->height / aspect - 1);
      if (!(deviation < 1e-6)) {
        failures.push_back(fmt::format("{}×{} {}边框 宽高比相对偏差 {:.3e}", width, height,
                                       framed ? "有" : "无", deviation));
      }
    }
  }
  return failures;
}

}  // namespace

CheckOutcome checkCamera(const PictureLayout& layout) {
  SelfCheck check(" 透视相机自检");
  check.step("方向向量是单位向量", directionIsUnit());
  check.step("正面机位精确铺满画幅", squareOnFills());
  check.step("fov 与景别正交", lensAndFramingAreIndependent());
  check.step("clamped 幂等", clampingIsIdempotent());
  check.step("填满画幅不露背景", frameIsFilled());
  check.step("填满解算全部收敛", everyPoseIsSolved());
  check.step("画面矩形不拉伸（预览＝导出）", pictureIsNotStretched(layout));
  return check.finishWithList("六条不变量全部成立");
}

}  // namespace vesk::app
