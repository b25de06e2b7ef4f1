#include "gpu/TransferFormat.h"

#include <epoxy/gl.h>

namespace vesk::gpu {

TransferFormat transferFormat(PixelFormat format) {
  switch (format) {
    case PixelFormat::r8:
      return {GL_R8, GL_RED, GL_UNSIGNED_BYTE, 1};
    case PixelFormat::r16:
      return {GL_R16, GL_RED, GL_UNSIGNED_SHORT, 2};
    case PixelFormat::bgra8:
      break;
  }
  return {GL_RGBA8, GL_BGRA, GL_UNSIGNED_BYTE, 4};
}

}  // namespace vesk::gpu
