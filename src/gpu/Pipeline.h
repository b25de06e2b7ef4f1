#pragma once

#include <expected>
#include <string_view>

#include "gpu/GpuError.h"

namespace vesk::gpu {

/// A compiled pair of shaders with its blending. Each vertex shader builds its quad from
/// gl_VertexID 0 to 5; uniforms come as one block at binding 0 and one at binding 1, textures at
/// units 0 and up, as the shaders' own layout qualifiers say.
class Pipeline {
 public:
  /// `over` is straight source-over: colour and alpha alike by source alpha.
  enum class Blending { off, over };

  static std::expected<Pipeline, GpuError> create(std::string_view vertexSource,
                                                  std::string_view fragmentSource,
                                                  Blending blending);

  Pipeline(Pipeline&& other) noexcept;
  Pipeline& operator=(Pipeline&& other) noexcept;
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;
  ~Pipeline();

  unsigned int program() const { return program_; }
  Blending blending() const { return blending_; }

 private:
  Pipeline(unsigned int program, Blending blending);

  unsigned int program_ = 0;
  Blending blending_ = Blending::off;
};

}  // namespace vesk::gpu
