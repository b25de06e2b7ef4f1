#pragma once

#include <atomic>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>

#include "compositor/CompositeTarget.h"
#include "compositor/PreviewRenderer.h"
#include "export/ExportError.h"
#include "export/ExportSettings.h"
#include "export/ExportStatistics.h"
#include "gpu/Device.h"
#include "package/RecordingProject.h"

namespace vesk::exporting {

/// Turns a recording into a movie: one object serves one export. Decoding, drawing and encoding
/// run side by side; drawing stays on the thread that calls exportMovie, where the renderer's
/// context must be current.
class ExportRenderer {
 public:
  using Progress = std::function<void(double)>;
  using Redraw = compositor::CompositeTarget::Redraw;

  /// @param device must outlive the object.
  /// @param renderer a clone that nobody else draws with.
  /// @param redraw `always` is for checking that drawing only what changes gives the same movie.
  ExportRenderer(const gpu::Device& device, std::unique_ptr<compositor::PreviewRenderer> renderer,
                 Redraw redraw = Redraw::changed);

  /// Writes the movie to `to`, replacing a file of that name, and puts the sound in (see muxAudio).
  /// After a failure or a cancellation no partial file is left; when only the sound failed, the
  /// silent movie is.
  /// @param progress gets the share that is done, 0…1, every ten frames, and 1 at the very end;
  /// called on the calling thread.
  std::expected<ExportStatistics, ExportError> exportMovie(const package::RecordingProject& project,
                                                           const ExportSettings& settings,
                                                           const std::filesystem::path& to,
                                                           const Progress& progress);

  /// Ends the export soon with `cancelled`, unless the picture is already complete. May be called
  /// from any thread, and from a signal handler.
  void cancel() { cancelled_ = true; }

 private:
  const gpu::Device& device_;
  std::unique_ptr<compositor::PreviewRenderer> renderer_;
  Redraw redraw_;
  std::atomic<bool> cancelled_ = false;
};

}  // namespace vesk::exporting
