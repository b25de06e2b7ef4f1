#pragma once

#include <array>
#include <cstddef>
#include <glm/vec4.hpp>
#include <initializer_list>
#include <optional>
#include <span>

#include "gpu/Framebuffer.h"
#include "gpu/Pipeline.h"
#include "gpu/PixelRect.h"
#include "gpu/Texture.h"

namespace vesk::gpu {

/// Buffers that carry the uniform records of draws to the shaders; kept by whoever draws often.
class UniformBuffers {
 public:
  static constexpr int count = 2;

  UniformBuffers();
  UniformBuffers(const UniformBuffers&) = delete;
  UniformBuffers& operator=(const UniformBuffers&) = delete;
  ~UniformBuffers();

  /// Makes `bytes` the uniform block at `binding`.
  void set(unsigned int binding, std::span<const std::byte> bytes);

 private:
  unsigned int vertexArray_ = 0;
  std::array<unsigned int, count> buffers_{};
};

/// A record as the bytes that go to the shader.
template <typename Record>
std::span<const std::byte> recordBytes(const Record& record) {
  return std::as_bytes(std::span(&record, 1));
}

/// A texture at a unit, and how much of it is looked at.
struct TextureBinding {
  enum class Levels {
    first,  ///< level 0 alone: cheaper, and the same where nothing is made smaller
    all,    ///< the levels that fit the size on the screen
  };
  const Texture& texture;  // NOLINT: lives for one draw
  Levels levels = Levels::first;
};

/// One run of draws into a framebuffer. Whatever state the context was in, the pass sets what it
/// needs; it leaves scissor and blending off.
class RenderPass {
 public:
  /// @param area drawing and clearing touch nothing outside; must lie inside the target.
  /// @param clear the colour that the area starts with; nothing keeps what is there.
  RenderPass(const Framebuffer& target, UniformBuffers& uniforms, const PixelRect& area,
             const std::optional<glm::vec4>& clear);
  RenderPass(const RenderPass&) = delete;
  RenderPass& operator=(const RenderPass&) = delete;
  ~RenderPass();

  /// Narrows the draws that follow to a part of the pass's own area.
  void restrictTo(const PixelRect& part);

  /// Draws `instances` quads. Block 0 and, when not empty, block 1 are the uniform records;
  /// `textures` fill the units from 0.
  void draw(const Pipeline& pipeline, std::span<const std::byte> block0,
            std::span<const std::byte> block1, std::initializer_list<TextureBinding> textures,
            int instances = 1);

 private:
  UniformBuffers& uniforms_;
  PixelRect area_;
};

}  // namespace vesk::gpu
