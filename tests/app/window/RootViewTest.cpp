#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/window/RootView.h"
#include "editor/EditorUIState.h"
#include "editor/EditorView.h"
#include "editor/SessionStage.h"
#include "package/RecordingLibrary.h"
#include "package/TrashFolder.h"
#include "package/UserDefaults.h"

namespace vesk::app {
namespace {

using editor::test::runEvents;
using std::chrono_literals::operator""ms;
using Category = editor::EditorUIState::Category;

constexpr const char* older = "20261121-100000";
constexpr const char* newer = "20261121-110000";

class RootView : public editor::test::SessionStage {
 protected:
  RootView() {
    static_cast<void>(defaults_.set("recordingLibraryPath", library().string()));
    recordings.emplace(package::RecordingLibrary::Surroundings{
        .defaults = defaults_,
        .trashFolder = package::TrashFolder(package::TrashFolder::currentSurroundings()),
        .makeThumbnail = {},
        .askForFolder = {},
        .now = [] { return package::Timestamp{}; }});
  }

  app::RootView& make(const WindowFlags& flags = {}) {
    root.emplace(flags, *recordings, *session, ui);
    return *root;
  }

  std::string openName() const {
    return session->hasProject() ? session->title().toStdString() : std::string{};
  }

 private:
  package::UserDefaults defaults_{folder.path() / "window.json"};

 protected:
  std::optional<package::RecordingLibrary> recordings;
  std::unique_ptr<editor::PreviewController> session = makeSession();
  editor::EditorUIState ui;
  editor::EditorView editor{*session, ui};
  std::optional<app::RootView> root;
};

TEST_F(RootView, theTabsReadAsThePages) {
  EXPECT_EQ(make().tabs(), QStringList({"录制", "录制库", "编辑"}));
}

TEST_F(RootView, itStartsOnThePageThatWasAskedFor) {
  for (const RootMode mode : allRootModes) {
    EXPECT_EQ(make({.mode = mode}).mode(), mode);
  }
  EXPECT_EQ(make().mode(), RootMode::record);
  EXPECT_TRUE(make({.mode = RootMode::edit}).isEditPage());
}

TEST_F(RootView, theEditPageAppearsWithTheNewestRecording) {
  putMarkedTake(older);
  putMarkedTake(newer);
  make({.mode = RootMode::edit}).appear();
  EXPECT_EQ(openName(), newer);
}

TEST_F(RootView, anotherPageAppearsWithoutOpeningAnything) {
  putMarkedTake(newer);
  make().appear();
  EXPECT_EQ(openName(), "");
}

TEST_F(RootView, aPackageThatIsNamedIsOpened) {
  const auto package = putMarkedTake(older);
  putMarkedTake(newer);
  make({.mode = RootMode::edit, .package = package}).appear();
  EXPECT_EQ(openName(), older);
}

TEST_F(RootView, whereTheNamedPackageCannotBeOpenedNoOtherOneIs) {
  putMarkedTake(newer);
  make({.mode = RootMode::edit, .package = folder.path() / "none.recording"}).appear();
  EXPECT_EQ(openName(), "");
  EXPECT_FALSE(session->loadError().isEmpty());
}

TEST_F(RootView, theEditTabOpensTheNewestUnlessOneIsOpen) {
  const auto package = putMarkedTake(older);
  make().appear();
  root->pickTab(2);
  EXPECT_EQ(openName(), older);
  putMarkedTake(newer);
  root->pick(RootMode::record);
  root->pick(RootMode::edit);
  EXPECT_EQ(openName(), older);
}

TEST_F(RootView, theModeChangesBeforeWhatFollows) {
  putMarkedTake(newer);
  std::optional<RootMode> modeAtOpen;
  QObject::connect(session.get(), &editor::PreviewController::projectChanged,
                   [&] { modeAtOpen = root->mode(); });
  make().pick(RootMode::edit);
  EXPECT_EQ(modeAtOpen, RootMode::edit);
}

TEST_F(RootView, theLibraryTabLooksIntoTheFolderAnew) {
  make().appear();
  EXPECT_TRUE(recordings->items().empty());
  putMarkedTake(newer);
  root->pick(RootMode::library);
  EXPECT_EQ(recordings->items().size(), 1U);
  EXPECT_EQ(openName(), "");
}

TEST_F(RootView, aTabThatThereIsNotIsIgnored) {
  make();
  root->pickTab(3);
  root->pickTab(-1);
  EXPECT_EQ(root->mode(), RootMode::record);
}

TEST_F(RootView, aFinishedTakeIsShownOnTheEditPage) {
  const auto package = putMarkedTake(newer);
  make().takeFinished(package);
  EXPECT_EQ(openName(), newer);
  EXPECT_EQ(recordings->items().size(), 1U);
  EXPECT_EQ(root->mode(), RootMode::edit);
}

TEST_F(RootView, thePanelThatWasAskedForIsOpen) {
  make({.openCategory = Category::pip});
  EXPECT_EQ(ui.openCategory(), Category::pip);
}

TEST_F(RootView, aPackageFromAnotherStartIsShownOnTheEditPage) {
  const auto package = putMarkedTake(newer);
  make().startedAgain({.package = package});
  EXPECT_EQ(openName(), newer);
  EXPECT_EQ(root->mode(), RootMode::edit);
  root->startedAgain({.mode = RootMode::library, .package = package});
  EXPECT_EQ(root->mode(), RootMode::library);
}

TEST_F(RootView, whereAnotherStartsPackageCannotBeOpenedNoOtherOneIs) {
  putMarkedTake(newer);
  make().startedAgain({.mode = RootMode::edit, .package = folder.path() / "none.recording"});
  EXPECT_EQ(openName(), "");
  EXPECT_EQ(root->mode(), RootMode::edit);
}

TEST_F(RootView, anotherStartShowsThePageThatItAsksFor) {
  putMarkedTake(newer);
  make().startedAgain({.mode = RootMode::library});
  EXPECT_EQ(root->mode(), RootMode::library);
  EXPECT_EQ(recordings->items().size(), 1U);
  root->startedAgain({.mode = RootMode::edit});
  EXPECT_EQ(root->mode(), RootMode::edit);
  EXPECT_EQ(openName(), newer);
  root->startedAgain({});
  EXPECT_EQ(root->mode(), RootMode::edit);
}

TEST_F(RootView, anotherStartOpensThePanelThatItAsksFor) {
  make({.openCategory = Category::pip}).startedAgain({});
  EXPECT_EQ(ui.openCategory(), Category::pip);
  root->startedAgain({.openCategory = Category::audio});
  EXPECT_EQ(ui.openCategory(), Category::audio);
}

TEST_F(RootView, anotherStartsTimeTakesThePlaceOfTheFirstOnes) {
  putMarkedTake(newer);
  make({.mode = RootMode::edit, .seek = 3.5}).appear();
  root->startedAgain({.seek = 5});
  root->activate();
  runEvents(800ms);
  EXPECT_EQ(session->currentTime(), 5);
  root->startedAgain({});
  session->seek(0);
  root->activate();
  runEvents(800ms);
  EXPECT_EQ(session->currentTime(), 5);
}

TEST_F(RootView, anotherStartsScriptedEditComesOnTheEditPage) {
  const auto package = putMarkedTake(newer);
  for (const RootMode before : {RootMode::edit, RootMode::record}) {
    make({.mode = before, .package = package}).appear();
    ui.setPip({});
    root->startedAgain({.mode = RootMode::edit, .editPoke = true});
    runEvents(app::RootView::pokeDelay + 300ms);
    EXPECT_EQ(session->look().pip.size, 0.37);
  }
}

TEST_F(RootView, eachActivationSeeksALittleLater) {
  putMarkedTake(newer);
  make({.mode = RootMode::edit, .seek = 3.5}).appear();
  for (int activation = 0; activation < 2; ++activation) {
    session->seek(0);
    root->activate();
    runEvents(300ms);
    EXPECT_EQ(session->currentTime(), 0);
    runEvents(500ms);
    EXPECT_EQ(session->currentTime(), 3.5);
  }
}

TEST_F(RootView, withoutATimeAnActivationMovesNothing) {
  putMarkedTake(newer);
  make({.mode = RootMode::edit}).appear();
  session->seek(1);
  root->activate();
  runEvents(800ms);
  EXPECT_EQ(session->currentTime(), 1);
}

TEST_F(RootView, theScriptedEditChangesWhatThePreviewFollows) {
  putMarkedTake(newer);
  make({.mode = RootMode::edit, .editPoke = true}).appear();
  runEvents(1500ms);
  EXPECT_EQ(session->look().pip.size, 0.22);
  runEvents(800ms);
  const compositor::CompositeSettings& look = session->look();
  EXPECT_EQ(look.pip.center, glm::vec2(0.31F, 0.42F));
  EXPECT_EQ(look.pip.size, 0.37);
  EXPECT_EQ(look.cursorSettings.style, package::CursorStyle::crosshair);
  EXPECT_EQ(look.rippleSettings.size, 0.038);
  EXPECT_EQ(look.transitionEase, motion::CameraEase::cinema);
  EXPECT_EQ(session->followSpeedRaw(), 0.88);
  for (const auto& segment : session->timeline().segments) EXPECT_EQ(segment.followSpeed, 0.88);
}

}  // namespace
}  // namespace vesk::app
