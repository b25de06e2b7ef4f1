#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "compositor/CompositeSettings.h"
#include "compositor/ReferencePicture.h"
#include "gpu/Framebuffer.h"
#include "media/VideoFrame.h"
#include "package/RecordingProject.h"

// Takes, pictures and canvases that the tests of the composite share.
namespace vesk::compositor::test {

package::RecordedEvent moveTo(double t, double x, double y);
package::RecordedEvent clickAt(double t, double x, double y);

/// A take of a screen of this size in pixels, one pixel a point.
package::RecordingProject makeProject(int width, int height,
                                      std::vector<package::RecordedEvent> events = {});
std::shared_ptr<const package::RecordingProject> shared(package::RecordingProject project);

/// Waves of colour about as long as the picture is wide.
media::VideoFrame smoothPicture(int width, int height);
/// The same with bars, a checkerboard and thin lines in it, as screens show them.
media::VideoFrame screenPicture(int width, int height);

/// A camera that looks straight at a point of the picture.
motion::CameraPose flatPose(double framing, glm::vec2 target = {0.5F, 0.5F});

/// The pixels of a canvas of bgra8.
DoubleImage canvasImage(const gpu::Framebuffer& canvas);

}  // namespace vesk::compositor::test
