#include "app/EditorStage.h"

#include <QEventLoop>
#include <QTimer>
#include <utility>

#include "media/HostTime.h"

namespace vesk::app {

EditorStage::EditorStage(package::RecordingLibrary& library,
                         std::unique_ptr<editor::SoundOutput> sound)
    : application_(QCoreApplication::instance() == nullptr ? std::make_unique<Application>()
                                                           : nullptr),
      library_(library),
      sound_(std::move(sound)) {}

std::unique_ptr<editor::PreviewController> EditorStage::makeSession() {
  return std::make_unique<editor::PreviewController>(
      editor::PreviewController::Surroundings{.library = library_,
                                              .sound = *sound_,
                                              .hostTime = media::monotonicTime,
                                              .wallClock = std::chrono::system_clock::now});
}

void EditorStage::runFor(std::chrono::milliseconds time) {
  QEventLoop loop;
  QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
  loop.exec();
}

}  // namespace vesk::app
