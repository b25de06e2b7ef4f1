#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "compositor/CompositeSettings.h"
#include "compositor/PreviewRenderer.h"
#include "export/SourceFrames.h"
#include "gpu/Device.h"
#include "gpu/SurfacelessContext.h"
#include "media/I420Picture.h"
#include "media/VideoFrame.h"
#include "package/RecordingProject.h"

namespace vesk::exporting {

/// How a test wants a recording shown.
struct Look {
  bool perspective = false;
  bool framed = false;
  double cameraShadow = 0;
};

/// The settings of a default session with this look, the camera track built.
compositor::CompositeSettings settingsFor(const package::RecordingProject& project, Look look = {});

package::RecordingProject loadTake(const std::filesystem::path& package);

/// A recording of flat pictures, 128×72, that has no events.
package::RecordingProject plainProject(const std::filesystem::path& package, double duration);

/// The recording as if it had begun `seconds` later.
package::RecordingProject startingAt(const package::RecordingProject& project, double seconds);

/// The pictures of a recording from `seconds` after its first one.
SourceFrames::Next picturesFrom(const std::filesystem::path& movie, double seconds = 0);

/// A picture of one shade of grey in limited range, to be shown at `pts` seconds.
media::VideoFrame flatFrame(int luma, double pts, int width = 128, int height = 72);

/// These pictures, one after the other.
SourceFrames::Next inTurn(std::vector<media::VideoFrame> frames);

/// A number that equal pictures share and different ones, but for odd chance, do not.
std::size_t fingerprint(const media::I420Picture& picture);

/// Draws with a real context. At the end of each test the driver must have had nothing to say.
class ExportStage : public testing::Test {
 protected:
  ExportStage();
  void TearDown() override;

  std::unique_ptr<compositor::PreviewRenderer> makeRenderer(
      const package::RecordingProject& project, const compositor::CompositeSettings& settings);

  const gpu::Device& device() const { return device_; }

 private:
  gpu::SurfacelessContext context_;
  gpu::Device device_;
};

}  // namespace vesk::exporting
