#include <epoxy/egl.h>
#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <thread>
#include <utility>

#include "gpu/Device.h"
#include "gpu/SurfacelessContext.h"

namespace vesk::gpu {
namespace {

using Diagnostics = SurfacelessContext::Diagnostics;

TEST(SurfacelessContext, isCurrentAtVersion43OrAbove) {
  EXPECT_TRUE(isEglPresent());
  const auto context = SurfacelessContext::create(Diagnostics::off);
  ASSERT_TRUE(context.has_value()) << context.error().message;
  EXPECT_GE(epoxy_gl_version(), 43);
  GLint profile = 0;
  glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
  EXPECT_EQ(profile, GL_CONTEXT_CORE_PROFILE_BIT);
}

TEST(SurfacelessContext, diagnosticsMakeADebugContext) {
  const auto isDebug = [](Diagnostics diagnostics) {
    const auto context = SurfacelessContext::create(diagnostics);
    GLint flags = 0;
    glGetIntegerv(GL_CONTEXT_FLAGS, &flags);
    return context.has_value() && (flags & GL_CONTEXT_FLAG_DEBUG_BIT) != 0;
  };
  EXPECT_TRUE(isDebug(Diagnostics::on));
  EXPECT_FALSE(isDebug(Diagnostics::off));
}

TEST(SurfacelessContext, nothingIsCurrentAfterItsEnd) {
  {
    const auto context = SurfacelessContext::create(Diagnostics::off);
  }
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
  // And another can follow.
  EXPECT_TRUE(SurfacelessContext::create(Diagnostics::off).has_value());
}

TEST(SurfacelessContext, staysCurrentWhenMoved) {
  auto context = SurfacelessContext::create(Diagnostics::off);
  ASSERT_TRUE(context.has_value());
  const SurfacelessContext moved = std::move(*context);
  EXPECT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

TEST(SurfacelessContext, eachThreadMayHaveItsOwn) {
  const auto context = SurfacelessContext::create(Diagnostics::off);
  ASSERT_TRUE(context.has_value());
  bool worked = false;
  std::thread([&] {
    const auto other = SurfacelessContext::create(Diagnostics::off);
    worked = other.has_value() && Device::current().has_value();
  }).join();
  EXPECT_TRUE(worked);
  EXPECT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

}  // namespace
}  // namespace vesk::gpu
