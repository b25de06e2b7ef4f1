#include "compositor/PictureDownload.h"

#include <utility>

#include "media/PictureConverter.h"
#include "vesk_compositor_shaders.h"

namespace vesk::compositor {
namespace {

constexpr int bytesPerPixel = 4;

// One plane of BT.709 limited range: weights of red, green and blue, the value at zero, and how
// many pixels of the canvas make a sample on each axis.
struct PlaneUniforms {
  glm::vec4 weights{0};
  std::int32_t step = 1;
  std::int32_t reserved[3] = {};  // NOLINT: part of the record's bytes
};
static_assert(sizeof(PlaneUniforms) == 32);

// The equations of ITU-R BT.709, scaled to 16…235 and 16…240 of 255.
std::array<PlaneUniforms, 3> planeUniforms() {
  constexpr double red = 0.2126;
  constexpr double blue = 0.0722;
  constexpr double green = 1 - red - blue;
  constexpr double lumaSpan = 219.0 / 255;
  constexpr double chromaSpan = 224.0 / 255;
  constexpr double black = 16.0 / 255;
  constexpr double grey = 128.0 / 255;
  constexpr double forBlue = chromaSpan / (2 * (1 - blue));
  constexpr double forRed = chromaSpan / (2 * (1 - red));
  return {PlaneUniforms{.weights =
                            glm::dvec4(red * lumaSpan, green * lumaSpan, blue * lumaSpan, black)},
          PlaneUniforms{
              .weights = glm::dvec4(-red * forBlue, -green * forBlue, (1 - blue) * forBlue, grey),
              .step = 2},
          PlaneUniforms{
              .weights = glm::dvec4((1 - red) * forRed, -green * forRed, -blue * forRed, grey),
              .step = 2}};
}

}  // namespace

PictureDownload::Conversion PictureDownload::preferredConversion(const gpu::Device& device) {
  return device.capabilities().isSoftware ? Conversion::onProcessor : Conversion::onGraphics;
}

PictureDownload::PictureDownload(int width, int height, std::optional<Graphics> graphics)
    : graphics_(std::move(graphics)), pool_(width, height), width_(width), height_(height) {
  if (!graphics_) {
    pixels_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                   bytesPerPixel);
  }
}

std::expected<PictureDownload, gpu::GpuError> PictureDownload::create(const gpu::Device& device,
                                                                      int width, int height,
                                                                      Conversion conversion) {
  if (conversion == Conversion::onProcessor) return PictureDownload(width, height, std::nullopt);
  auto graphics = createGraphics(device, width, height);
  if (!graphics) return std::unexpected(graphics.error());
  return PictureDownload(width, height, std::move(*graphics));
}

std::expected<PictureDownload::Graphics, gpu::GpuError> PictureDownload::createGraphics(
    const gpu::Device& device, int width, int height) {
  auto pipeline = gpu::Pipeline::create(shaders::convertVertex, shaders::planeFragment,
                                        gpu::Pipeline::Blending::off);
  if (!pipeline) return std::unexpected(pipeline.error());
  Graphics graphics{.pipeline = std::move(*pipeline), .planes = {}};
  for (const PlaneUniforms& plane : planeUniforms()) {
    auto texture =
        gpu::Texture::create(device, width / plane.step, height / plane.step, gpu::PixelFormat::r8);
    if (!texture) return std::unexpected(texture.error());
    auto framebuffer = gpu::Framebuffer::create(*texture);
    if (!framebuffer) return std::unexpected(framebuffer.error());
    graphics.planes.push_back({std::move(*texture), std::move(*framebuffer)});
  }
  return graphics;
}

std::shared_ptr<const media::I420Picture> PictureDownload::download(
    const gpu::Texture& canvas, const gpu::Framebuffer& framebuffer, const CompositeDamage& damage,
    gpu::UniformBuffers& uniforms) {
  if (last_ && damage.isNothing()) return last_;
  const std::shared_ptr<media::I420Picture> picture = pool_.acquire();
  const auto read = [&](const gpu::PixelRect& part) {
    const media::PixelRect even =
        media::evenRect({part.x, part.y, part.width, part.height}, width_, height_);
    const gpu::PixelRect rect{even.x, even.y, even.width, even.height};
    if (graphics_) {
      readPlanes(canvas, rect, *picture, uniforms);
    } else {
      readPixels(framebuffer, rect, *picture);
    }
  };
  if (last_ && !damage.isEverything) {
    picture->copyFrom(*last_);
    for (const gpu::PixelRect& rect : damage.rects) read(rect);
  } else {
    read({0, 0, width_, height_});
  }
  last_ = picture;
  return last_;
}

void PictureDownload::readPixels(const gpu::Framebuffer& framebuffer, const gpu::PixelRect& part,
                                 media::I420Picture& picture) {
  const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(width_) * bytesPerPixel;
  framebuffer.read(pixels_.data(), stride, part);
  const media::BgraView view{
      .data = reinterpret_cast<const std::uint8_t*>(pixels_.data()),  // NOLINT
      .stride = stride,
      .width = width_,
      .height = height_};
  media::convertToI420(view, {part.x, part.y, part.width, part.height}, picture);
}

void PictureDownload::readPlanes(const gpu::Texture& canvas, const gpu::PixelRect& part,
                                 media::I420Picture& picture, gpu::UniformBuffers& uniforms) {
  const std::array<PlaneUniforms, 3> records = planeUniforms();
  const auto planePart = [&](int step) {
    return gpu::PixelRect{part.x / step, part.y / step, part.width / step, part.height / step};
  };
  for (std::size_t index = 0; index < records.size(); ++index) {
    gpu::RenderPass pass(graphics_->planes[index].framebuffer, uniforms,
                         planePart(records.at(index).step), std::nullopt);
    pass.draw(graphics_->pipeline, gpu::recordBytes(records.at(index)), {}, {{canvas}});
  }
  // All planes are drawn before the first is waited for.
  for (std::size_t index = 0; index < records.size(); ++index) {
    const media::I420Picture::Plane& plane = picture.planes().at(index);
    graphics_->planes[index].framebuffer.read(reinterpret_cast<std::byte*>(plane.data),  // NOLINT
                                              plane.stride, planePart(records.at(index).step));
  }
}

}  // namespace vesk::compositor
