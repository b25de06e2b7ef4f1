#include "gpu/SurfacelessContext.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gpu/Device.h"

namespace vesk::gpu {

struct SurfacelessContext::Handles {
  EGLDisplay display = EGL_NO_DISPLAY;
  EGLContext context = EGL_NO_CONTEXT;

  Handles(EGLDisplay theDisplay, EGLContext theContext)
      : display(theDisplay), context(theContext) {}
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;
  // The display is left initialised: EGL hands out one per platform and process, and another
  // context may live on it.
  ~Handles() {
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display, context);
  }
};

namespace {

GpuError error(GpuError::Kind kind, std::string message) {
  return {kind, std::move(message)};
}

// Displays that need no window system: one per device the driver knows, then Mesa's surfaceless
// platform, then whatever the platform's default is.
std::vector<EGLDisplay> candidateDisplays() {
  std::vector<EGLDisplay> displays;
  if (epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_platform_device") &&
      epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_device_enumeration")) {
    std::array<EGLDeviceEXT, 16> devices{};
    EGLint count = 0;
    if (eglQueryDevicesEXT(static_cast<EGLint>(devices.size()), devices.data(), &count) ==
        EGL_TRUE) {
      for (EGLint index = 0; index < count; ++index) {
        displays.push_back(eglGetPlatformDisplayEXT(
            EGL_PLATFORM_DEVICE_EXT, devices[static_cast<std::size_t>(index)], nullptr));
      }
    }
  }
  if (epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless")) {
    displays.push_back(
        eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
  }
  displays.push_back(eglGetDisplay(EGL_DEFAULT_DISPLAY));
  std::erase(displays, EGL_NO_DISPLAY);
  return displays;
}

}  // namespace

SurfacelessContext::SurfacelessContext(std::unique_ptr<Handles> handles)
    : handles_(std::move(handles)) {}
SurfacelessContext::SurfacelessContext(SurfacelessContext&&) noexcept = default;
SurfacelessContext& SurfacelessContext::operator=(SurfacelessContext&&) noexcept = default;
SurfacelessContext::~SurfacelessContext() = default;

std::expected<SurfacelessContext, GpuError> SurfacelessContext::createOn(void* display,
                                                                         Diagnostics diagnostics) {
  EGLint major = 0;
  EGLint minor = 0;
  if (eglInitialize(display, &major, &minor) == EGL_FALSE ||
      eglBindAPI(EGL_OPENGL_API) == EGL_FALSE) {
    return std::unexpected(error(GpuError::Kind::noDisplay, "EGL cannot be initialised"));
  }
  if (!epoxy_has_egl_extension(display, "EGL_KHR_surfaceless_context")) {
    return std::unexpected(
        error(GpuError::Kind::unsupported, "EGL offers no context without a surface"));
  }
  const std::array<EGLint, 3> configAttributes{EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
  EGLConfig config = EGL_NO_CONFIG_KHR;
  EGLint count = 0;
  eglChooseConfig(display, configAttributes.data(), &config, 1, &count);
  const std::array<EGLint, 9> attributes{EGL_CONTEXT_MAJOR_VERSION,
                                         4,
                                         EGL_CONTEXT_MINOR_VERSION,
                                         3,
                                         EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                         EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                         EGL_CONTEXT_OPENGL_DEBUG,
                                         diagnostics == Diagnostics::on ? EGL_TRUE : EGL_FALSE,
                                         EGL_NONE};
  const EGLContext context = eglCreateContext(display, count > 0 ? config : EGL_NO_CONFIG_KHR,
                                              EGL_NO_CONTEXT, attributes.data());
  if (context == EGL_NO_CONTEXT) {
    return std::unexpected(error(GpuError::Kind::versionTooLow, "no OpenGL 4.3 core context"));
  }
  auto handles = std::make_unique<Handles>(display, context);
  if (eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context) == EGL_FALSE) {
    return std::unexpected(error(GpuError::Kind::noContext, "the context cannot be made current"));
  }
  return SurfacelessContext(std::move(handles));
}

std::expected<SurfacelessContext, GpuError> SurfacelessContext::create(Diagnostics diagnostics) {
  // Without libEGL a call through the loader would end the process, so ask for it first.
  if (!isEglPresent()) {
    return std::unexpected(error(GpuError::Kind::noDisplay, "libEGL or libGL is not installed"));
  }
  GpuError lastError = error(GpuError::Kind::noDisplay, "no EGL display");
  std::optional<EGLDisplay> softwareDisplay;
  for (const EGLDisplay display : candidateDisplays()) {
    auto context = createOn(display, diagnostics);
    if (!context) {
      lastError = context.error();
      continue;
    }
    if (!isSoftwareRenderer()) return context;
    if (!softwareDisplay) softwareDisplay = display;
  }
  if (softwareDisplay) return createOn(*softwareDisplay, diagnostics);
  return std::unexpected(lastError);
}

}  // namespace vesk::gpu
