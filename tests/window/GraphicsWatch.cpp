#include "window/GraphicsWatch.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <utility>

namespace vesk::app::test {
namespace {

void GLAPIENTRY keepMessage(GLenum /*source*/, GLenum type, GLuint /*id*/, GLenum severity,
                            GLsizei length, const GLchar* text, const void* watch) {
  // How fast the driver is, and what it works with, is no fault.
  if (severity == GL_DEBUG_SEVERITY_NOTIFICATION || type == GL_DEBUG_TYPE_PERFORMANCE ||
      type == GL_DEBUG_TYPE_OTHER) {
    return;
  }
  auto* const listener = static_cast<GraphicsWatch*>(const_cast<void*>(watch));  // NOLINT
  listener->keep(std::string(text, static_cast<std::size_t>(std::max(length, 0))));
}

}  // namespace

GraphicsWatch::GraphicsWatch(QQuickWindow& window) {
  // The preview listens for itself while it is being made, so this is said again at each step.
  for (const auto step :
       {&QQuickWindow::afterSynchronizing, &QQuickWindow::beforeRendering,
        &QQuickWindow::beforeRenderPassRecording, &QQuickWindow::afterRendering}) {
    connect(&window, step, this, &GraphicsWatch::listen, Qt::DirectConnection);
  }
}

void GraphicsWatch::listen() {
  void* listener = nullptr;
  glGetPointerv(GL_DEBUG_CALLBACK_USER_PARAM, &listener);
  if (listener == this) return;
  GLint flags = 0;
  glGetIntegerv(GL_CONTEXT_FLAGS, &flags);
  if ((flags & GL_CONTEXT_FLAG_DEBUG_BIT) == 0) return;
  // An error that stands from before is not of what comes now.
  while (glGetError() != GL_NO_ERROR) {
  }
  glEnable(GL_DEBUG_OUTPUT);
  glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
  glDebugMessageCallback(&keepMessage, this);
  const std::lock_guard lock(mutex_);
  hasListened_ = true;
}

void GraphicsWatch::keep(std::string message) {
  const std::lock_guard lock(mutex_);
  messages_.push_back(std::move(message));
}

std::vector<std::string> GraphicsWatch::messages() const {
  const std::lock_guard lock(mutex_);
  return messages_;
}

bool GraphicsWatch::hasListened() const {
  const std::lock_guard lock(mutex_);
  return hasListened_;
}

}  // namespace vesk::app::test
