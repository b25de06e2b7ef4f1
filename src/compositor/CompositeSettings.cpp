#include "compositor/CompositeSettings.h"

namespace vesk::compositor {

motion::CameraPose CompositeSettings::pose(double time) const {
  if (followsTrack()) return cameraTrack->sample(time);
  motion::CameraPose pose;
  pose.target = zoomCenter;
  pose.framing = zoomLevel;
  if (camera3D.enabled) pose.fov = camera3D.fov;
  return pose;
}

}  // namespace vesk::compositor
