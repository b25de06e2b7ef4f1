#include "export/ExportError.h"

namespace vesk::exporting {

std::string ExportError::description() const {
  switch (kind) {
    case Kind::readerFailed:
      return "读取失败：" + message;
    case Kind::writerFailed:
      return "写入失败：" + message;
    case Kind::noVideoTrack:
      return "源文件里没有视频轨";
    case Kind::cancelled:
      break;
  }
  return "已取消";
}

}  // namespace vesk::exporting
