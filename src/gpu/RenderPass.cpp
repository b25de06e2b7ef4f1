#include "gpu/RenderPass.h"

#include <epoxy/gl.h>

namespace vesk::gpu {

UniformBuffers::UniformBuffers() {
  // A core context draws only with a vertex array bound, also when no vertex comes from memory.
  glGenVertexArrays(1, &vertexArray_);
  glGenBuffers(count, buffers_.data());
}

UniformBuffers::~UniformBuffers() {
  glDeleteBuffers(count, buffers_.data());
  glDeleteVertexArrays(1, &vertexArray_);
}

void UniformBuffers::set(unsigned int binding, std::span<const std::byte> bytes) {
  glBindVertexArray(vertexArray_);
  glBindBuffer(GL_UNIFORM_BUFFER, buffers_.at(binding));
  glBufferData(GL_UNIFORM_BUFFER, static_cast<GLsizeiptr>(bytes.size()), bytes.data(),
               GL_STREAM_DRAW);
  glBindBufferBase(GL_UNIFORM_BUFFER, binding, buffers_.at(binding));
}

RenderPass::RenderPass(const Framebuffer& target, UniformBuffers& uniforms, const PixelRect& area,
                       const std::optional<glm::vec4>& clear)
    : uniforms_(uniforms), area_(area) {
  glBindFramebuffer(GL_FRAMEBUFFER, target.handle());
  glViewport(0, 0, target.width(), target.height());
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_STENCIL_TEST);
  glDisable(GL_CULL_FACE);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glEnable(GL_SCISSOR_TEST);
  restrictTo(area_);
  if (clear) {
    glClearColor(clear->r, clear->g, clear->b, clear->a);
    glClear(GL_COLOR_BUFFER_BIT);
  }
}

RenderPass::~RenderPass() {
  glDisable(GL_SCISSOR_TEST);
  glDisable(GL_BLEND);
  glBindVertexArray(0);
  glUseProgram(0);
}

void RenderPass::restrictTo(const PixelRect& part) {
  const PixelRect common = area_.intersection(part);
  glScissor(common.x, common.y, common.width, common.height);
}

void RenderPass::draw(const Pipeline& pipeline, std::span<const std::byte> block0,
                      std::span<const std::byte> block1,
                      std::initializer_list<TextureBinding> textures, int instances) {
  constexpr int verticesOfAQuad = 6;
  glUseProgram(pipeline.program());
  if (pipeline.blending() == Pipeline::Blending::over) {
    glEnable(GL_BLEND);
    glBlendEquation(GL_FUNC_ADD);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  } else {
    glDisable(GL_BLEND);
  }
  uniforms_.set(0, block0);
  if (!block1.empty()) uniforms_.set(1, block1);
  GLenum unit = GL_TEXTURE0;
  for (const TextureBinding& binding : textures) {
    glActiveTexture(unit++);
    glBindTexture(GL_TEXTURE_2D, binding.texture.handle());
    // A filter without levels lets a software renderer take a much shorter way to the texels.
    glTexParameteri(
        GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
        binding.levels == TextureBinding::Levels::all ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
  }
  glActiveTexture(GL_TEXTURE0);
  glDrawArraysInstanced(GL_TRIANGLES, 0, verticesOfAQuad, instances);
}

}  // namespace vesk::gpu
