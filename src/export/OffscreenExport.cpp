#include "export/OffscreenExport.h"

#include <utility>

#include "compositor/PreviewRenderer.h"
#include "package/Log.h"

namespace vesk::exporting {
namespace {

std::unique_ptr<MovieExport> failure(const gpu::GpuError& error) {
  package::log(package::LogCategory::exporting).error("no usable OpenGL: {}", error.message);
  return nullptr;
}

}  // namespace

OffscreenExport::OffscreenExport(gpu::SurfacelessContext context, gpu::Device device,
                                 std::shared_ptr<const package::RecordingProject> project)
    : context_(std::move(context)), device_(std::move(device)), project_(std::move(project)) {}

std::unique_ptr<MovieExport> OffscreenExport::create(
    std::shared_ptr<const package::RecordingProject> project,
    compositor::CompositeSettings settings) {
  auto context = gpu::SurfacelessContext::create(gpu::SurfacelessContext::Diagnostics::off);
  if (!context) return failure(context.error());
  auto device = gpu::Device::current();
  if (!device) return failure(device.error());
  std::unique_ptr<OffscreenExport> made(
      new OffscreenExport(*std::move(context), *std::move(device), project));
  auto clone = compositor::PreviewRenderer::createForExport(made->device_, std::move(settings),
                                                            std::move(project));
  if (!clone) return failure(clone.error());
  made->renderer_ = std::make_unique<ExportRenderer>(made->device_, *std::move(clone));
  return made;
}

std::expected<void, ExportError> OffscreenExport::run(const ExportSettings& settings,
                                                      const std::filesystem::path& to,
                                                      const Progress& progress) {
  auto outcome = renderer_->exportMovie(*project_, settings, to, progress);
  if (!outcome) return std::unexpected(std::move(outcome.error()));
  return {};
}

void OffscreenExport::cancel() {
  renderer_->cancel();
}

}  // namespace vesk::exporting
