#pragma once

#include <atomic>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>

#include "compositor/CompositeTarget.h"
#include "compositor/PictureDownload.h"
#include "compositor/PreviewRenderer.h"
#include "export/ExportError.h"
#include "export/ExportStatistics.h"
#include "export/SourceFrames.h"
#include "gpu/Device.h"
#include "media/I420Picture.h"

namespace vesk::exporting {

/// The frames of an export, from their pictures and poses to pixels ready to be encoded. Runs on
/// the thread on which the renderer's context is current.
class RenderLoop {
 public:
  struct Grid {
    int width = 0;   ///< pixels, even
    int height = 0;  ///< pixels, even
    std::int64_t fps = 60;
    std::int64_t frames = 1;
  };
  /// Takes the next frame; equal frames come as the same picture. False ends the loop.
  using Sink = std::function<bool(std::shared_ptr<const media::I420Picture>)>;
  /// Takes the share that is done, 0…1.
  using Progress = std::function<void(double)>;

  /// Both must outlive the loop.
  RenderLoop(const gpu::Device& device, compositor::PreviewRenderer& renderer,
             compositor::CompositeTarget::Redraw redraw,
             compositor::PictureDownload::Conversion conversion);

  /// Renders the grid's frames in order. Frames before the first picture are left out.
  std::expected<ExportStatistics, ExportError> run(const Grid& grid, SourceFrames& source,
                                                   const Sink& sink, const Progress& progress,
                                                   const std::atomic<bool>& cancelled);

 private:
  const gpu::Device& device_;
  compositor::PreviewRenderer& renderer_;
  compositor::CompositeTarget::Redraw redraw_;
  compositor::PictureDownload::Conversion conversion_;
};

}  // namespace vesk::exporting
