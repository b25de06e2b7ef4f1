#include "app/HeadlessRenderer.h"

#include <utility>

#include "package/Log.h"

namespace vesk::app {
namespace {

void logFailure(const gpu::GpuError& error) {
  package::log(package::LogCategory::render).error("no usable OpenGL: {}", error.message);
}

}  // namespace

HeadlessRenderer::HeadlessRenderer(gpu::SurfacelessContext context, gpu::Device device)
    : context_(std::move(context)), device_(std::move(device)) {}

std::unique_ptr<HeadlessRenderer> HeadlessRenderer::create() {
  auto context = gpu::SurfacelessContext::create(gpu::SurfacelessContext::Diagnostics::off);
  if (!context) {
    logFailure(context.error());
    return nullptr;
  }
  auto device = gpu::Device::current();
  if (!device) {
    logFailure(device.error());
    return nullptr;
  }
  return std::unique_ptr<HeadlessRenderer>(
      new HeadlessRenderer(*std::move(context), *std::move(device)));
}

std::unique_ptr<compositor::PreviewRenderer> HeadlessRenderer::makeRenderer() const {
  auto renderer = compositor::PreviewRenderer::create(device_);
  if (!renderer) {
    logFailure(renderer.error());
    return nullptr;
  }
  return *std::move(renderer);
}

}  // namespace vesk::app
