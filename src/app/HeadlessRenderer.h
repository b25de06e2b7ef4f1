#pragma once

#include <memory>
#include <optional>

#include "compositor/PreviewRenderer.h"
#include "gpu/Device.h"
#include "gpu/SurfacelessContext.h"

namespace vesk::app {

/// The compositor with a graphics context of its own, for commands that run without a window. To
/// be used on the thread that made it.
class HeadlessRenderer {
 public:
  /// Nothing, with the reason in the log, on a machine that cannot draw.
  static std::unique_ptr<HeadlessRenderer> create();

  const gpu::Device& device() const { return device_; }

  /// A fresh renderer on this context; null, with the reason in the log, when it cannot be made.
  std::unique_ptr<compositor::PreviewRenderer> makeRenderer() const;

 private:
  HeadlessRenderer(gpu::SurfacelessContext context, gpu::Device device);

  gpu::SurfacelessContext context_;
  gpu::Device device_;
};

}  // namespace vesk::app
