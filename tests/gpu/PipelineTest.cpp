#include "gpu/GpuTest.h"
#include "gpu/Pipeline.h"

namespace vesk::gpu {
namespace {

using ::testing::IsEmpty;
using ::testing::Not;

constexpr std::string_view vertex = R"(#version 430 core
void main() { gl_Position = vec4(0.0, 0.0, 0.0, 1.0); })";
constexpr std::string_view fragment = R"(#version 430 core
layout(location = 0) out vec4 color;
void main() { color = vec4(1.0); })";

class PipelineTest : public test::GpuTest {};

TEST_F(PipelineTest, compilesAndKeepsItsBlending) {
  auto pipeline = take(Pipeline::create(vertex, fragment, Pipeline::Blending::over));
  EXPECT_NE(pipeline.program(), 0U);
  EXPECT_EQ(pipeline.blending(), Pipeline::Blending::over);
  const unsigned int program = pipeline.program();
  const Pipeline moved = std::move(pipeline);
  EXPECT_EQ(moved.program(), program);
}

TEST_F(PipelineTest, sourcesNeedNoTerminatingZero) {
  const std::string more = std::string(vertex) + "garbage that belongs to somebody else";
  EXPECT_TRUE(Pipeline::create(std::string_view(more).substr(0, vertex.size()), fragment,
                               Pipeline::Blending::off)
                  .has_value());
}

// The driver may well put a failed compilation among its complaints.
class BrokenPipelineTest : public test::GpuTest {
 protected:
  void TearDown() override {}
};

TEST_F(BrokenPipelineTest, aVertexShaderThatDoesNotCompileIsAnErrorWithTheReason) {
  const auto pipeline = Pipeline::create("#version 430 core\nvoid main() { oops }", fragment,
                                         Pipeline::Blending::off);
  ASSERT_FALSE(pipeline.has_value());
  EXPECT_EQ(pipeline.error().kind, GpuError::Kind::compileFailed);
  EXPECT_THAT(pipeline.error().message, Not(IsEmpty()));
}

TEST_F(BrokenPipelineTest, aFragmentShaderThatDoesNotCompileIsAnError) {
  const auto pipeline = Pipeline::create(vertex, "not a shader", Pipeline::Blending::off);
  ASSERT_FALSE(pipeline.has_value());
  EXPECT_EQ(pipeline.error().kind, GpuError::Kind::compileFailed);
}

TEST_F(BrokenPipelineTest, anEmptySourceIsAnError) {
  EXPECT_FALSE(Pipeline::create("", "", Pipeline::Blending::off).has_value());
}

TEST_F(BrokenPipelineTest, shadersThatDoNotFitTogetherAreAnError) {
  constexpr std::string_view wantsMore = R"(#version 430 core
in vec3 nobodyGivesThis;
layout(location = 0) out vec4 color;
void main() { color = vec4(nobodyGivesThis, 1.0); })";
  const auto pipeline = Pipeline::create(vertex, wantsMore, Pipeline::Blending::off);
  ASSERT_FALSE(pipeline.has_value());
  EXPECT_EQ(pipeline.error().kind, GpuError::Kind::compileFailed);
}

}  // namespace
}  // namespace vesk::gpu
