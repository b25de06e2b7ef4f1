#include <epoxy/gl.h>

#include <array>
#include <vector>

#include "gpu/GpuTest.h"
#include "gpu/RenderPass.h"

namespace vesk::gpu {
namespace {

constexpr std::string_view fullQuad = R"(#version 430 core
void main() {
  vec2 corner = vec2(gl_VertexID == 1 || gl_VertexID >= 4, gl_VertexID == 2 || gl_VertexID == 3 ||
                     gl_VertexID == 5);
  gl_Position = vec4(corner * 2.0 - 1.0, 0.0, 1.0);
})";
// Quad n of a row of quads two pixels wide on a target of eight.
constexpr std::string_view narrowQuads = R"(#version 430 core
void main() {
  vec2 corner = vec2(gl_VertexID == 1 || gl_VertexID >= 4, gl_VertexID == 2 || gl_VertexID == 3 ||
                     gl_VertexID == 5);
  float x = (float(gl_InstanceID) + corner.x) * 2.0 / 8.0;
  gl_Position = vec4(x * 2.0 - 1.0, corner.y * 2.0 - 1.0, 0.0, 1.0);
})";
constexpr std::string_view uniformColor = R"(#version 430 core
layout(std140, binding = 0) uniform First { vec4 first; };
layout(location = 0) out vec4 color;
void main() { color = first; })";
constexpr std::string_view sumOfBlocks = R"(#version 430 core
layout(std140, binding = 0) uniform First { vec4 first; };
layout(std140, binding = 1) uniform Second { vec4 second; };
layout(location = 0) out vec4 color;
void main() { color = first + second; })";
constexpr std::string_view twoTextures = R"(#version 430 core
layout(binding = 0) uniform sampler2D a;
layout(binding = 1) uniform sampler2D b;
layout(location = 0) out vec4 color;
void main() {
  ivec2 pixel = ivec2(gl_FragCoord.xy);
  color = vec4(texelFetch(a, pixel, 0).r, texelFetch(b, pixel, 0).r, 0.0, 1.0);
})";

using Bgra = std::array<int, 4>;

class RenderPassTest : public test::GpuTest {
 protected:
  static constexpr int width = 8;
  static constexpr int height = 6;

  void SetUp() override {
    GpuTest::SetUp();
    texture_.emplace(take(Texture::create(device(), width, height, PixelFormat::bgra8)));
    target_.emplace(take(Framebuffer::create(*texture_)));
    uniforms_.emplace();
  }
  void TearDown() override {
    uniforms_.reset();
    target_.reset();
    texture_.reset();
    GpuTest::TearDown();
  }

  RenderPass pass(const PixelRect& scissor, std::optional<glm::vec4> clear = std::nullopt) {
    return {*target_, *uniforms_, scissor, clear};
  }
  static Pipeline pipeline(std::string_view vertex, std::string_view fragment,
                           Pipeline::Blending blending = Pipeline::Blending::off) {
    return take(Pipeline::create(vertex, fragment, blending));
  }
  Bgra pixel(int x, int y) const {
    std::vector<std::byte> pixels(static_cast<std::size_t>(width) * height * 4);
    target_->read(pixels.data(), std::ptrdiff_t{4} * width, target_->bounds());
    Bgra result{};
    for (std::size_t channel = 0; channel < 4; ++channel) {
      result.at(channel) =
          static_cast<int>(pixels[static_cast<std::size_t>(y * width + x) * 4 + channel]);
    }
    return result;
  }

  static constexpr PixelRect everything{0, 0, width, height};

 private:
  std::optional<Texture> texture_;
  std::optional<Framebuffer> target_;
  std::optional<UniformBuffers> uniforms_;
};

TEST_F(RenderPassTest, clearsWithinTheScissorOnly) {
  pass(everything, glm::vec4(0, 0, 0, 1));
  pass({2, 1, 3, 2}, glm::vec4(1, 1, 1, 1));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool inside = x >= 2 && x < 5 && y >= 1 && y < 3;
      const int level = inside ? 255 : 0;
      ASSERT_EQ(pixel(x, y), (Bgra{level, level, level, 255})) << x << ", " << y;
    }
  }
}

TEST_F(RenderPassTest, withoutAClearColourKeepsWhatIsThere) {
  pass(everything, glm::vec4(0, 1, 0, 1));
  pass(everything);
  EXPECT_EQ(pixel(3, 3), (Bgra{0, 255, 0, 255}));
}

TEST_F(RenderPassTest, drawsWithinTheScissorOnly) {
  const Pipeline paint = pipeline(fullQuad, uniformColor);
  pass(everything, glm::vec4(0, 0, 0, 1));
  pass({1, 1, 2, 2}).draw(paint, recordBytes(glm::vec4(1, 0, 0, 1)), {}, {});
  EXPECT_EQ(pixel(1, 1), (Bgra{0, 0, 255, 255}));
  EXPECT_EQ(pixel(2, 2), (Bgra{0, 0, 255, 255}));
  EXPECT_EQ(pixel(3, 2), (Bgra{0, 0, 0, 255}));
  EXPECT_EQ(pixel(1, 0), (Bgra{0, 0, 0, 255}));
}

TEST_F(RenderPassTest, bothBlocksReachTheShader) {
  const Pipeline paint = pipeline(fullQuad, sumOfBlocks);
  pass(everything)
      .draw(paint, recordBytes(glm::vec4(0.2F, 0, 0, 1)), recordBytes(glm::vec4(0.4F, 0, 1, 0)),
            {});
  EXPECT_EQ(pixel(7, 5), (Bgra{255, 0, 153, 255}));
}

TEST_F(RenderPassTest, texturesFillTheUnitsInOrder) {
  const std::vector<std::byte> bright(static_cast<std::size_t>(width) * height, std::byte{200});
  const std::vector<std::byte> dark(static_cast<std::size_t>(width) * height, std::byte{50});
  Texture a = take(Texture::create(device(), width, height, PixelFormat::r8));
  Texture b = take(Texture::create(device(), width, height, PixelFormat::r8));
  a.upload(bright.data(), width, a.bounds());
  b.upload(dark.data(), width, b.bounds());
  pass(everything).draw(pipeline(fullQuad, twoTextures), recordBytes(glm::vec4(0)), {}, {{a}, {b}});
  EXPECT_EQ(pixel(0, 0), (Bgra{0, 50, 200, 255}));
}

TEST_F(RenderPassTest, blendingIsStraightSourceOverForColourAndAlphaAlike) {
  const Pipeline paint = pipeline(fullQuad, uniformColor, Pipeline::Blending::over);
  const glm::vec4 ground(0.2F, 0.4F, 0.6F, 0.5F);
  const glm::vec4 source(1.0F, 0.0F, 0.5F, 0.25F);
  pass(everything, ground).draw(paint, recordBytes(source), {}, {});
  const glm::vec4 expected = source * source.a + ground * (1 - source.a);
  const Bgra result = pixel(4, 4);
  EXPECT_NEAR(result[0], expected.b * 255, 1);
  EXPECT_NEAR(result[1], expected.g * 255, 1);
  EXPECT_NEAR(result[2], expected.r * 255, 1);
  EXPECT_NEAR(result[3], expected.a * 255, 1);
}

TEST_F(RenderPassTest, withoutBlendingAlphaIsJustAValue) {
  pass(everything, glm::vec4(1))
      .draw(pipeline(fullQuad, uniformColor), recordBytes(glm::vec4(0, 0, 0, 0)), {}, {});
  EXPECT_EQ(pixel(4, 4), (Bgra{0, 0, 0, 0}));
}

TEST_F(RenderPassTest, drawsAsManyQuadsAsAskedFor) {
  const Pipeline paint = pipeline(narrowQuads, uniformColor);
  pass(everything, glm::vec4(0, 0, 0, 1)).draw(paint, recordBytes(glm::vec4(1)), {}, {}, 3);
  EXPECT_EQ(pixel(0, 3), (Bgra{255, 255, 255, 255}));
  EXPECT_EQ(pixel(5, 3), (Bgra{255, 255, 255, 255}));
  EXPECT_EQ(pixel(6, 3), (Bgra{0, 0, 0, 255}));
}

TEST_F(RenderPassTest, setsTheStateThatOthersLeftInItsWay) {
  glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  glEnable(GL_CULL_FACE);
  glCullFace(GL_FRONT_AND_BACK);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_NEVER);
  glEnable(GL_BLEND);
  glBlendFunc(GL_ZERO, GL_ZERO);
  glViewport(0, 0, 1, 1);
  pass(everything, glm::vec4(0))
      .draw(pipeline(fullQuad, uniformColor), recordBytes(glm::vec4(1)), {}, {});
  EXPECT_EQ(pixel(7, 5), (Bgra{255, 255, 255, 255}));
}

TEST_F(RenderPassTest, leavesScissorAndBlendingOff) {
  pass(everything)
      .draw(pipeline(fullQuad, uniformColor, Pipeline::Blending::over), recordBytes(glm::vec4(1)),
            {}, {});
  EXPECT_EQ(glIsEnabled(GL_SCISSOR_TEST), GL_FALSE);
  EXPECT_EQ(glIsEnabled(GL_BLEND), GL_FALSE);
}

}  // namespace
}  // namespace vesk::gpu
