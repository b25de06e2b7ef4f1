#include "editor/pipewire/PipeWireSoundOutput.h"

#include <utility>

#include "package/Log.h"

namespace vesk::editor::pipewire {

PipeWireSoundOutput::PipeWireSoundOutput(std::string remote) : remote_{std::move(remote)} {}

PipeWireSoundOutput::~PipeWireSoundOutput() {
  run_.stop();
}

std::expected<std::unique_ptr<SoundOutput>, std::string> PipeWireSoundOutput::open(
    const std::string& remote) {
  std::unique_ptr<PipeWireSoundOutput> output{new PipeWireSoundOutput{remote}};
  output->connect();
  if (!output->stream_) return std::unexpected("连接不上 PipeWire 服务");
  return output;
}

void PipeWireSoundOutput::connect() {
  stream_.reset();  // the old one must not take samples beside the new one
  stream_ = PlaybackStream::connect(
      remote_, [this](auto samples, auto now, auto heardAt) { run_.take(samples, now, heardAt); });
}

void PipeWireSoundOutput::start(Fill fill) {
  if (!stream_ || stream_->isLost()) {
    package::log(package::LogCategory::preview).info("sound: the server went away, looking again");
    connect();
  }
  run_.start(std::move(fill), media::monotonicTime());
  if (stream_) stream_->setActive(true);
}

void PipeWireSoundOutput::stop() {
  run_.stop();
  if (stream_) stream_->setActive(false);
}

double PipeWireSoundOutput::heard(media::HostTime now) const {
  return run_.heard(now);
}

bool PipeWireSoundOutput::isAudible() const {
  return stream_ && stream_->hasDevice();
}

}  // namespace vesk::editor::pipewire
