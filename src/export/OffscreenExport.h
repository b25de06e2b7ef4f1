#pragma once

#include <memory>

#include "compositor/CompositeSettings.h"
#include "export/ExportRenderer.h"
#include "export/MovieExport.h"
#include "gpu/Device.h"
#include "gpu/SurfacelessContext.h"
#include "package/RecordingProject.h"

namespace vesk::exporting {

/// An export with a graphics context of its own, so that it disturbs no window: everything from the
/// context to the last frame belongs to the thread that calls create().
class OffscreenExport : public MovieExport {
 public:
  /// Null, with the reason in the log, on a machine that cannot draw.
  static std::unique_ptr<MovieExport> create(
      std::shared_ptr<const package::RecordingProject> project,
      compositor::CompositeSettings settings);

  std::expected<void, ExportError> run(const ExportSettings& settings,
                                       const std::filesystem::path& to,
                                       const Progress& progress) override;
  void cancel() override;

 private:
  OffscreenExport(gpu::SurfacelessContext context, gpu::Device device,
                  std::shared_ptr<const package::RecordingProject> project);

  gpu::SurfacelessContext context_;
  gpu::Device device_;
  std::shared_ptr<const package::RecordingProject> project_;
  std::unique_ptr<ExportRenderer> renderer_;  ///< draws with `device_`; never null after create()
};

}  // namespace vesk::exporting
