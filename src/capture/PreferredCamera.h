#pragma once

#include <memory>
#include <vector>

#include "capture/CameraSource.h"

namespace vesk::capture {

/// Several ways to the cameras of one machine. The first that knows of any is the one that is used,
/// for a camera may show up in each of them.
class PreferredCamera final : public CameraSource {
 public:
  /// @param sources the one to be preferred first.
  explicit PreferredCamera(std::vector<std::unique_ptr<CameraSource>> sources);

  std::vector<CameraDevice> devices() override;
  std::expected<std::unique_ptr<Listening>, CameraRefusal> listen(const CameraDevice& device,
                                                                  PixelSize size, OnFrame onFrame,
                                                                  OnEnd onEnd) override;

 private:
  std::vector<std::unique_ptr<CameraSource>> sources_;
};

}  // namespace vesk::capture
