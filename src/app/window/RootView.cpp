#include "app/window/RootView.h"

#include <QTimer>

#include "app/window/ScriptedEdit.h"

namespace vesk::app {

RootView::RootView(const WindowFlags& flags, package::RecordingLibrary& library,
                   editor::PreviewController& preview, editor::EditorUIState& ui, QObject* parent)
    : QObject(parent),
      flags_(flags),
      library_(library),
      preview_(preview),
      ui_(ui),
      mode_(flags.mode.value_or(RootMode::record)) {
  ui_.setOpenCategory(flags.openCategory);
}

QStringList RootView::tabs() const {
  QStringList labels;
  for (const RootMode mode : allRootModes) {
    const std::string_view label = rawValue(mode);
    labels.append(QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size())));
  }
  return labels;
}

void RootView::appear() {
  if (flags_.package) {
    preview_.open(*flags_.package);
  } else if (mode_ == RootMode::edit && !preview_.hasProject()) {
    preview_.loadLatest();
  }
  if (mode_ == RootMode::edit) editPageAppeared();
}

void RootView::activate() {
  if (!flags_.seek) return;
  QTimer::singleShot(seekDelay, this, [this, seconds = *flags_.seek] { preview_.seek(seconds); });
}

void RootView::pick(RootMode mode) {
  setMode(mode);
  if (mode == RootMode::library) library_.rescan();
  if (mode == RootMode::edit && !preview_.hasProject()) preview_.loadLatest();
}

void RootView::pickTab(int index) {
  if (index < 0 || index >= static_cast<int>(allRootModes.size())) return;
  pick(allRootModes.at(static_cast<std::size_t>(index)));
}

void RootView::startedAgain(const WindowFlags& asked) {
  const bool wasEditPage = isEditPage();
  if (asked.seek) flags_.seek = asked.seek;
  if (asked.editPoke) flags_.editPoke = true;
  if (asked.openCategory) ui_.setOpenCategory(asked.openCategory);
  if (asked.package) {
    preview_.open(*asked.package);
    setMode(asked.mode.value_or(RootMode::edit));
  } else if (asked.mode) {
    pick(*asked.mode);
  }
  if (asked.editPoke && wasEditPage && isEditPage()) editPageAppeared();
}

void RootView::takeFinished(const std::filesystem::path& package) {
  preview_.open(package);
  library_.rescan();
  setMode(RootMode::edit);
}

void RootView::setMode(RootMode mode) {
  if (mode == mode_) return;
  mode_ = mode;
  Q_EMIT modeChanged();
  if (mode == RootMode::edit) editPageAppeared();
}

void RootView::editPageAppeared() {
  if (!flags_.editPoke) return;
  QTimer::singleShot(pokeDelay, this, [this] { runScriptedEdit(preview_, ui_); });
}

}  // namespace vesk::app
