#include <vector>

#include "gpu/Framebuffer.h"
#include "gpu/GpuTest.h"
#include "gpu/RenderPass.h"

namespace vesk::gpu {
namespace {

class FramebufferTest : public test::GpuTest {};

TEST_F(FramebufferTest, hasTheMeasuresOfItsTexture) {
  const Texture texture = take(Texture::create(device(), 20, 10, PixelFormat::bgra8));
  const Framebuffer framebuffer = take(Framebuffer::create(texture));
  EXPECT_EQ(framebuffer.width(), 20);
  EXPECT_EQ(framebuffer.height(), 10);
  EXPECT_EQ(framebuffer.bounds(), (PixelRect{0, 0, 20, 10}));
}

TEST_F(FramebufferTest, readsOnlyTheBytesOfTheRectangle) {
  constexpr int width = 12;
  constexpr int height = 7;
  constexpr std::ptrdiff_t stride = 4 * width + 16;
  const Texture texture = take(Texture::create(device(), width, height, PixelFormat::bgra8));
  const Framebuffer framebuffer = take(Framebuffer::create(texture));
  UniformBuffers uniforms;
  {
    const RenderPass pass(framebuffer, uniforms, framebuffer.bounds(), glm::vec4(1, 0, 0, 1));
  }

  constexpr std::byte untouched{0x5A};
  std::vector<std::byte> pixels(static_cast<std::size_t>(stride * height), untouched);
  const PixelRect part{3, 2, 5, 4};
  framebuffer.read(pixels.data(), stride, part);
  for (int y = 0; y < height; ++y) {
    for (int byte = 0; byte < stride; ++byte) {
      const bool inside = !part.intersection({byte / 4, y, 1, 1}).isEmpty();
      // Red in memory: blue and green 0, red and alpha 255.
      const std::byte red = byte % 4 < 2 ? std::byte{0} : std::byte{255};
      ASSERT_EQ(pixels[static_cast<std::size_t>(y * stride + byte)], inside ? red : untouched)
          << byte << ", " << y;
    }
  }
}

TEST_F(FramebufferTest, readingAnEmptyRectangleTouchesNothing) {
  const Texture texture = take(Texture::create(device(), 4, 4, PixelFormat::r8));
  const Framebuffer framebuffer = take(Framebuffer::create(texture));
  framebuffer.read(nullptr, 4, {1, 1, 0, 3});
}

TEST_F(FramebufferTest, aMovedFramebufferStillDrawsIntoItsTexture) {
  const Texture texture = take(Texture::create(device(), 2, 2, PixelFormat::r8));
  Framebuffer first = take(Framebuffer::create(texture));
  const Framebuffer second = std::move(first);
  UniformBuffers uniforms;
  {
    const RenderPass pass(second, uniforms, second.bounds(), glm::vec4(1));
  }
  std::vector<std::byte> pixels(4);
  second.read(pixels.data(), 2, second.bounds());
  EXPECT_THAT(pixels, ::testing::Each(std::byte{255}));
}

}  // namespace
}  // namespace vesk::gpu
