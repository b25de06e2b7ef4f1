#include "gpu/Pipeline.h"

#include <epoxy/gl.h>

#include <string>
#include <utility>

namespace vesk::gpu {
namespace {

class Shader {
 public:
  Shader(GLenum stage, std::string_view source) : handle_(glCreateShader(stage)) {
    const GLchar* text = source.data();
    const auto length = static_cast<GLint>(source.size());
    glShaderSource(handle_, 1, &text, &length);
    glCompileShader(handle_);
  }
  Shader(const Shader&) = delete;
  Shader& operator=(const Shader&) = delete;
  ~Shader() { glDeleteShader(handle_); }

  GLuint handle() const { return handle_; }

  bool isCompiled() const {
    GLint status = GL_FALSE;
    glGetShaderiv(handle_, GL_COMPILE_STATUS, &status);
    return status == GL_TRUE;
  }

  std::string infoLog() const {
    GLint length = 0;
    glGetShaderiv(handle_, GL_INFO_LOG_LENGTH, &length);
    std::string text(static_cast<std::size_t>(length > 0 ? length : 1), '\0');
    glGetShaderInfoLog(handle_, length, nullptr, text.data());
    return text;
  }

 private:
  GLuint handle_;
};

}  // namespace

Pipeline::Pipeline(unsigned int program, Blending blending)
    : program_(program), blending_(blending) {}

Pipeline::Pipeline(Pipeline&& other) noexcept
    : program_(std::exchange(other.program_, 0)), blending_(other.blending_) {}

Pipeline& Pipeline::operator=(Pipeline&& other) noexcept {
  std::swap(program_, other.program_);
  blending_ = other.blending_;
  return *this;
}

Pipeline::~Pipeline() {
  if (program_ != 0) glDeleteProgram(program_);
}

std::expected<Pipeline, GpuError> Pipeline::create(std::string_view vertexSource,
                                                   std::string_view fragmentSource,
                                                   Blending blending) {
  const Shader vertex(GL_VERTEX_SHADER, vertexSource);
  const Shader fragment(GL_FRAGMENT_SHADER, fragmentSource);
  for (const Shader* shader : {&vertex, &fragment}) {
    if (!shader->isCompiled()) {
      return std::unexpected(GpuError{GpuError::Kind::compileFailed, shader->infoLog()});
    }
  }
  Pipeline pipeline(glCreateProgram(), blending);
  glAttachShader(pipeline.program_, vertex.handle());
  glAttachShader(pipeline.program_, fragment.handle());
  glLinkProgram(pipeline.program_);
  GLint linked = GL_FALSE;
  glGetProgramiv(pipeline.program_, GL_LINK_STATUS, &linked);
  if (linked != GL_TRUE) {
    return std::unexpected(GpuError{GpuError::Kind::compileFailed, "the shaders cannot be linked"});
  }
  return pipeline;
}

}  // namespace vesk::gpu
