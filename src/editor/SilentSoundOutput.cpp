#include "editor/SilentSoundOutput.h"

#include <chrono>
#include <utility>

namespace vesk::editor {

SilentSoundOutput::SilentSoundOutput(std::function<media::HostTime()> hostTime)
    : hostTime_{std::move(hostTime)} {}

void SilentSoundOutput::start(Fill /*fill*/) {
  start_ = hostTime_();
}

void SilentSoundOutput::stop() {
  start_.reset();
}

double SilentSoundOutput::heard(media::HostTime now) const {
  return start_ ? std::chrono::duration<double>(now - *start_).count() : 0;
}

bool SilentSoundOutput::isAudible() const {
  return false;
}

}  // namespace vesk::editor
