#pragma once

#include <expected>
#include <memory>

#include "gpu/GpuError.h"

namespace vesk::gpu {

/// An OpenGL 4.3 core context of its own, without a window or a display server. A hardware
/// renderer is preferred; where there is none the software renderer serves.
/// Created current on the calling thread, and used and destroyed there.
class SurfacelessContext {
 public:
  enum class Diagnostics { off, on };  ///< `on` asks the driver for debug messages

  static std::expected<SurfacelessContext, GpuError> create(Diagnostics diagnostics);

  SurfacelessContext(SurfacelessContext&&) noexcept;
  SurfacelessContext& operator=(SurfacelessContext&&) noexcept;
  SurfacelessContext(const SurfacelessContext&) = delete;
  SurfacelessContext& operator=(const SurfacelessContext&) = delete;
  ~SurfacelessContext();

 private:
  struct Handles;
  explicit SurfacelessContext(std::unique_ptr<Handles> handles);
  static std::expected<SurfacelessContext, GpuError> createOn(void* display,
                                                              Diagnostics diagnostics);

  std::unique_ptr<Handles> handles_;
};

}  // namespace vesk::gpu
