#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spdlog/sinks/ostream_sink.h>

#include <memory>
#include <sstream>

#include "capture/pipewire/TestSoundServer.h"
#include "editor/SilentSoundOutput.h"
#include "editor/contract/SoundOutputContract.h"
#include "editor/pipewire/PipeWireSoundOutput.h"
#include "editor/pipewire/SoundOutputs.h"
#include "package/Log.h"

namespace vesk::editor::pipewire {
namespace {

/// What goes to the log of the preview meanwhile.
class PreviewLog {
 public:
  PreviewLog() { log_.sinks().push_back(sink_); }
  PreviewLog(const PreviewLog&) = delete;
  PreviewLog& operator=(const PreviewLog&) = delete;
  ~PreviewLog() { log_.sinks().pop_back(); }

  std::string text() const { return stream_.str(); }

 private:
  std::ostringstream stream_;
  spdlog::logger& log_ = package::log(package::LogCategory::preview);
  std::shared_ptr<spdlog::sinks::sink> sink_ =
      std::make_shared<spdlog::sinks::ostream_sink_mt>(stream_);
};

TEST(SoundOutputs, withoutAServerPlaybackIsSilentAndTheLogSaysSo) {
  const PreviewLog log;
  const auto output = openSoundOutput("/nowhere/pipewire-0");
  ASSERT_NE(dynamic_cast<SilentSoundOutput*>(output.get()), nullptr);
  EXPECT_FALSE(output->isAudible());
  EXPECT_THAT(log.text(), testing::HasSubstr("no sound by PipeWire: 连接不上 PipeWire 服务"));
  output->start({});
  EXPECT_TRUE(contract::comesTrue([&] { return output->heard(contract::hostTime()) > 0.02; }));
}

TEST(SoundOutputs, aServerIsPreferred) {
  const capture::pipewire::test::TestSoundServer server;
  const auto output = openSoundOutput(server.remote());
  EXPECT_NE(dynamic_cast<PipeWireSoundOutput*>(output.get()), nullptr);
}

}  // namespace
}  // namespace vesk::editor::pipewire
