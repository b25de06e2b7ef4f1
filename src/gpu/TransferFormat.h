#pragma once

#include "gpu/Texture.h"

namespace vesk::gpu {

/// OpenGL's names for a pixel format, as plain numbers so that its header stays out of ours.
struct TransferFormat {
  unsigned int internal = 0;    ///< of the texture
  unsigned int components = 0;  ///< of the bytes that go up or come back
  unsigned int type = 0;        ///< of one component
  int bytes = 0;                ///< of one pixel
};

TransferFormat transferFormat(PixelFormat format);

}  // namespace vesk::gpu
