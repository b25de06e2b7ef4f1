#include <epoxy/gl.h>

#include "gpu/Device.h"
#include "gpu/GpuTest.h"

namespace vesk::gpu {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class DeviceTest : public test::GpuTest {};

TEST_F(DeviceTest, tellsWhatTheContextCanDo) {
  const Device::Capabilities& capabilities = device().capabilities();
  EXPECT_THAT(capabilities.renderer, Not(IsEmpty()));
  EXPECT_THAT(capabilities.version, Not(IsEmpty()));
  EXPECT_GE(capabilities.maxTextureSize, 8192);
  EXPECT_GE(capabilities.maxAnisotropy, 1);
}

TEST_F(DeviceTest, filtersAnisotropicallyOnHardwareOnly) {
  const Device::Capabilities& capabilities = device().capabilities();
  EXPECT_EQ(capabilities.isSoftware, isSoftwareRenderer());
  if (capabilities.renderer.find("llvmpipe") != std::string::npos) {
    EXPECT_TRUE(capabilities.isSoftware);
  }
  if (capabilities.isSoftware) {
    EXPECT_EQ(capabilities.maxAnisotropy, 1);
  }
}

TEST_F(DeviceTest, anErrorLeftBehindByOthersIsNotReported) {
  // Its own device, so that the complaint below stays out of the test's.
  glBindTexture(GL_TEXTURE_2D, 0);
  const auto second = Device::current();
  ASSERT_TRUE(second.has_value());
  glEnable(GL_TEXTURE_CUBE_MAP);  // no capability of a core context
  const auto third = Device::current();
  ASSERT_TRUE(third.has_value());
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  EXPECT_THAT(third->debugMessages(), IsEmpty());
}

TEST_F(DeviceTest, keepsTheDriversComplaints) {
  const auto device = Device::current();
  ASSERT_TRUE(device.has_value());
  glEnable(GL_TEXTURE_CUBE_MAP);
  glGetError();
  EXPECT_THAT(device->debugMessages(), Not(IsEmpty()));
}

TEST_F(DeviceTest, complaintsFollowADeviceThatMoves) {
  auto device = Device::current();
  ASSERT_TRUE(device.has_value());
  const Device moved = std::move(*device);
  glEnable(GL_TEXTURE_CUBE_MAP);
  glGetError();
  EXPECT_THAT(moved.debugMessages(), Not(IsEmpty()));
}

TEST(Device, withoutAContextThereIsNone) {
  const auto device = Device::current();
  ASSERT_FALSE(device.has_value());
  EXPECT_EQ(device.error().kind, GpuError::Kind::versionTooLow);
  EXPECT_THAT(device.error().message, HasSubstr("context"));
}

}  // namespace
}  // namespace vesk::gpu
