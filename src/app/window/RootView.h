#pragma once

#include <QtQml/qqml.h>

#include <QObject>
#include <QString>
#include <QStringList>
#include <chrono>
#include <filesystem>

#include "app/window/RootMode.h"
#include "app/window/WindowFlags.h"
#include "editor/EditorUIState.h"
#include "editor/PreviewController.h"
#include "package/RecordingLibrary.h"

namespace vesk::app {

/// What the window's content does: which page it shows, and what follows from a choice of page, an
/// activation, a finished take. Main thread.
class RootView : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")
  Q_PROPERTY(int mode READ modeIndex NOTIFY modeChanged)
  Q_PROPERTY(QStringList tabs READ tabs CONSTANT)
  Q_PROPERTY(bool isRecordPage READ isRecordPage NOTIFY modeChanged)
  Q_PROPERTY(bool isLibraryPage READ isLibraryPage NOTIFY modeChanged)
  Q_PROPERTY(bool isEditPage READ isEditPage NOTIFY modeChanged)

 public:
  /// From an activation to the seek that was asked for.
  static constexpr std::chrono::milliseconds seekDelay{600};
  /// From the appearance of the edit page to the scripted edit.
  static constexpr std::chrono::milliseconds pokeDelay{2000};

  /// All of them outlive the view.
  RootView(const WindowFlags& flags, package::RecordingLibrary& library,
           editor::PreviewController& preview, editor::EditorUIState& ui,
           QObject* parent = nullptr);

  RootMode mode() const { return mode_; }
  bool isRecordPage() const { return mode_ == RootMode::record; }
  bool isLibraryPage() const { return mode_ == RootMode::library; }
  bool isEditPage() const { return mode_ == RootMode::edit; }
  int modeIndex() const { return static_cast<int>(mode_); }
  QStringList tabs() const;

  /// The window's content appears for the first time.
  void appear();
  /// The application comes to the front, the first time and every time again.
  void activate();
  /// The user picks a tab.
  void pick(RootMode mode);
  Q_INVOKABLE void pickTab(int index);
  /// The application was started again while it runs. Of the flags those that are given take the
  /// place of the earlier ones; a package is shown on the edit page unless another one is asked
  /// for. An activation follows.
  void startedAgain(const WindowFlags& asked);
  /// A take has become this package.
  void takeFinished(const std::filesystem::path& package);

 Q_SIGNALS:
  void modeChanged();

 private:
  void setMode(RootMode mode);
  void editPageAppeared();

  WindowFlags flags_;
  package::RecordingLibrary& library_;
  editor::PreviewController& preview_;
  editor::EditorUIState& ui_;
  RootMode mode_;
};

}  // namespace vesk::app
