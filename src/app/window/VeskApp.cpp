#include "app/window/VeskApp.h"

#include <chrono>
#include <utility>

#include "media/HostTime.h"

namespace vesk::app {

VeskApp::VeskApp(const WindowFlags& flags, package::RecordingLibrary& library,
                 std::unique_ptr<editor::SoundOutput> sound)
    : sound_(std::move(sound)),
      preview_({.library = library,
                .sound = *sound_,
                .hostTime = media::monotonicTime,
                .wallClock = std::chrono::system_clock::now}),
      editor_(preview_, editorUI_),
      keys_(preview_, editor_),
      overlay_(preview_, editorUI_),
      timeline_(preview_, editorUI_),
      root_(flags, library, preview_, editorUI_) {}

QVariantMap VeskApp::properties() {
  return {{QStringLiteral("root"), QVariant::fromValue(&root_)},
          {QStringLiteral("preview"), QVariant::fromValue(&preview_)},
          {QStringLiteral("editor"), QVariant::fromValue(&editor_)},
          {QStringLiteral("keys"), QVariant::fromValue(&keys_)},
          {QStringLiteral("overlay"), QVariant::fromValue(&overlay_)},
          {QStringLiteral("timeline"), QVariant::fromValue(&timeline_)}};
}

}  // namespace vesk::app
