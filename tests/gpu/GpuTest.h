#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <expected>
#include <optional>
#include <stdexcept>
#include <utility>

#include "gpu/Device.h"
#include "gpu/SurfacelessContext.h"

namespace vesk::gpu::test {

/// A test with an OpenGL context of its own. It fails when the driver found anything to complain
/// about while it ran.
class GpuTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto context = SurfacelessContext::create(SurfacelessContext::Diagnostics::on);
    ASSERT_TRUE(context.has_value()) << context.error().message;
    context_.emplace(std::move(*context));
    auto device = Device::current();
    ASSERT_TRUE(device.has_value()) << device.error().message;
    device_.emplace(std::move(*device));
  }

  void TearDown() override {
    if (device_) {
      EXPECT_THAT(device_->debugMessages(), ::testing::IsEmpty());
    }
  }

  const Device& device() const { return *device_; }

  /// The value of something that may fail, which ends the test in that case.
  template <typename Value>
  static Value take(std::expected<Value, GpuError> result) {
    if (!result) throw std::runtime_error(result.error().message);
    return std::move(*result);
  }

 private:
  // In this order: the device's objects go before the context that they live in.
  std::optional<SurfacelessContext> context_;
  std::optional<Device> device_;
};

}  // namespace vesk::gpu::test
