#pragma once

#include <cstddef>
#include <cstdint>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

// The records that go up to the shaders: 32-bit floats, little-endian, at fixed offsets that equal
// the std140 layout of the uniform blocks in shaders/.
//
// Canvas fractions have their origin at the top left and y down; sizes without another unit are
// shares of the canvas height.
namespace vesk::compositor {

struct BackdropUniforms {
  glm::vec4 colorA{0};
  glm::vec4 colorB{0};
  glm::vec4 rect{0};  ///< content rectangle x, y, width, height in canvas fractions
  float cornerRadius = 0;
  float shadow = 0;
  float aspect = 1;      ///< canvas width over height
  float isGradient = 0;  ///< 0 or 1
  bool operator==(const BackdropUniforms&) const = default;
};
static_assert(sizeof(BackdropUniforms) == 64);
static_assert(offsetof(BackdropUniforms, rect) == 32);
static_assert(offsetof(BackdropUniforms, cornerRadius) == 48);
static_assert(offsetof(BackdropUniforms, isGradient) == 60);

struct FrameUniforms {
  glm::mat4 mvp{1};
  glm::mat4 prevMVP{1};
  float blur = 0;
  float cornerRadius = 0;
  float aspect = 1;
  float rectX = 0;
  float rectY = 0;
  float rectW = 1;
  float rectH = 1;
  float canvasWidth = 0;   ///< pixels
  float canvasHeight = 0;  ///< pixels
  float reserved[3] = {};  // NOLINT: part of the record's bytes
  bool operator==(const FrameUniforms&) const = default;
};
static_assert(sizeof(FrameUniforms) == 176);
static_assert(offsetof(FrameUniforms, prevMVP) == 64);
static_assert(offsetof(FrameUniforms, blur) == 128);
static_assert(offsetof(FrameUniforms, cornerRadius) == 132);
static_assert(offsetof(FrameUniforms, aspect) == 136);
static_assert(offsetof(FrameUniforms, rectX) == 140);
static_assert(offsetof(FrameUniforms, canvasWidth) == 156);
static_assert(offsetof(FrameUniforms, canvasHeight) == 160);
static_assert(offsetof(FrameUniforms, reserved) == 164);

/// How the frame's motion blur takes its samples; goes up beside FrameUniforms.
struct FrameSampling {
  std::int32_t taps = 1;          ///< the most along one pixel's motion, 1…32; 1 is no blur
  std::uint32_t frameIndex = 0;   ///< moves the jitter of the taps
  std::int32_t reserved[2] = {};  // NOLINT: part of the record's bytes
  bool operator==(const FrameSampling&) const = default;
};
static_assert(sizeof(FrameSampling) == 16);

struct CursorUniforms {
  glm::vec2 origin{0};  ///< top-left corner, canvas fractions
  glm::vec2 size{0};    ///< canvas fractions
  float opacity = 1;
  float reserved[3] = {};  // NOLINT: part of the record's bytes
  bool operator==(const CursorUniforms&) const = default;
};
static_assert(sizeof(CursorUniforms) == 32);
static_assert(offsetof(CursorUniforms, size) == 8);
static_assert(offsetof(CursorUniforms, opacity) == 16);

struct RippleInstance {
  glm::vec2 center{0};  ///< canvas fractions
  glm::vec2 hole{0};    ///< `color` is aligned to 16 bytes
  glm::vec4 color{0};
  float progress = 0;   ///< 0 at the click, 1 at the end
  float maxRadius = 0;  ///< canvas heights
  float style = 0;      ///< 0 wave, 1 ring, 2 dot
  float stroke = 0;     ///< 1 with the white stroke
  glm::vec2 aspect{1};  ///< 1, canvas width over height
  glm::vec2 pad{0};
  bool operator==(const RippleInstance&) const = default;
};
static_assert(sizeof(RippleInstance) == 64);
static_assert(offsetof(RippleInstance, color) == 16);
static_assert(offsetof(RippleInstance, progress) == 32);
static_assert(offsetof(RippleInstance, stroke) == 44);
static_assert(offsetof(RippleInstance, aspect) == 48);

struct PiPUniforms {
  glm::vec2 center{0};     ///< canvas fractions
  glm::vec2 halfSize{0};   ///< canvas fractions
  float cornerRadius = 0;  ///< share of the window's height
  float border = 0;        ///< share of the window's height
  float shadow = 0;
  float aspect = 1;     ///< canvas width over height
  float mirrored = 0;   ///< 0 or 1
  float camAspect = 1;  ///< camera picture width over height
  glm::vec2 reserved{0};
  bool operator==(const PiPUniforms&) const = default;
};
static_assert(sizeof(PiPUniforms) == 48);
static_assert(offsetof(PiPUniforms, cornerRadius) == 16);
static_assert(offsetof(PiPUniforms, aspect) == 28);
static_assert(offsetof(PiPUniforms, camAspect) == 36);

}  // namespace vesk::compositor
