#include "gpu/Device.h"

#include <dlfcn.h>
#include <epoxy/gl.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace vesk::gpu {
namespace {

constexpr int requiredVersion = 43;

std::string glString(GLenum name) {
  const GLubyte* text = glGetString(name);
  // OpenGL gives its strings as unsigned bytes.
  return text != nullptr ? reinterpret_cast<const char*>(text) : "";  // NOLINT
}

bool isLibraryPresent(const char* name) {
  void* handle = dlopen(name, RTLD_LAZY | RTLD_LOCAL);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

void GLAPIENTRY keepMessage(GLenum /*source*/, GLenum /*type*/, GLuint /*id*/, GLenum severity,
                            GLsizei length, const GLchar* text, const void* user) {
  if (severity == GL_DEBUG_SEVERITY_NOTIFICATION) return;
  auto* messages = static_cast<std::vector<std::string>*>(const_cast<void*>(user));  // NOLINT
  messages->emplace_back(text, static_cast<std::size_t>(std::max(length, 0)));
}

}  // namespace

bool isEglPresent() {
  return isLibraryPresent("libEGL.so.1");
}

bool isSoftwareRenderer() {
  const std::string renderer = glString(GL_RENDERER);
  constexpr std::array<std::string_view, 3> softwareNames{"llvmpipe", "softpipe", "SWR"};
  return std::ranges::any_of(softwareNames, [&](std::string_view name) {
    return renderer.find(name) != std::string::npos;
  });
}

Device::Device(Capabilities capabilities, std::unique_ptr<std::vector<std::string>> messages)
    : capabilities_(std::move(capabilities)), messages_(std::move(messages)) {}
Device::Device(Device&&) noexcept = default;
Device& Device::operator=(Device&&) noexcept = default;

Device::~Device() {
  if (messages_) glDebugMessageCallback(nullptr, nullptr);
}

const std::vector<std::string>& Device::debugMessages() const {
  return *messages_;
}

std::expected<Device, GpuError> Device::current() {
  const int version = epoxy_gl_version();
  if (version < requiredVersion) {
    return std::unexpected(
        GpuError{GpuError::Kind::versionTooLow,
                 version == 0 ? "no OpenGL context is current" : "OpenGL is older than 4.3"});
  }
  // A toolkit that shares the context may have left an error behind; it is not ours to report.
  for (int guard = 0; guard < 32 && glGetError() != GL_NO_ERROR; ++guard) {
  }
  Capabilities capabilities{.renderer = glString(GL_RENDERER),
                            .version = glString(GL_VERSION),
                            .isSoftware = isSoftwareRenderer()};
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &capabilities.maxTextureSize);
  const bool filtersAnisotropically = epoxy_has_gl_extension("GL_EXT_texture_filter_anisotropic") ||
                                      epoxy_has_gl_extension("GL_ARB_texture_filter_anisotropic");
  if (filtersAnisotropically && !capabilities.isSoftware) {
    glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY, &capabilities.maxAnisotropy);
  }
  auto messages = std::make_unique<std::vector<std::string>>();
  GLint flags = 0;
  glGetIntegerv(GL_CONTEXT_FLAGS, &flags);
  if ((flags & GL_CONTEXT_FLAG_DEBUG_BIT) != 0) {
    glEnable(GL_DEBUG_OUTPUT);
    glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
    glDebugMessageCallback(&keepMessage, messages.get());
  }
  return Device(std::move(capabilities), std::move(messages));
}

}  // namespace vesk::gpu
