#include "window/WindowStage.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>
#include <algorithm>
#include <stdexcept>

#include "editor/SilentSoundOutput.h"
#include "media/HostTime.h"
#include "package/TrashFolder.h"
#include "window/Desktop.h"

namespace vesk::app::test {

using std::chrono_literals::operator""ms;

namespace {

/// What is made by a repeater or stands in a popup is found here only, not among the objects.
QQuickItem* itemIn(const QQuickItem& parent, const QString& name) {
  for (QQuickItem* const child : parent.childItems()) {
    if (child->objectName() == name) return child;
    if (QQuickItem* const found = itemIn(*child, name)) return found;
  }
  return nullptr;
}

}  // namespace

WindowStage::WindowStage() {
  const std::filesystem::path root = folder_ / "library";
  std::filesystem::create_directory(root);
  static_cast<void>(defaults_.set("recordingLibraryPath", root.string()));
  library_.emplace(package::RecordingLibrary::Surroundings{
      .defaults = defaults_,
      .trashFolder = package::TrashFolder(package::TrashFolder::currentSurroundings()),
      .makeThumbnail = {},
      .askForFolder = {},
      .now = [] { return package::Timestamp{}; }});
}

WindowStage::~WindowStage() {
  quit();
}

std::filesystem::path WindowStage::put(const std::filesystem::path& take) {
  const std::filesystem::path package = library_->root() / take.filename();
  std::filesystem::copy(take, package, std::filesystem::copy_options::recursive);
  return package;
}

void WindowStage::start(const WindowFlags& flags) {
  application_ = std::make_unique<VeskApp>(
      flags, *library_, std::make_unique<editor::SilentSoundOutput>(media::monotonicTime));
  mainWindow_ = MainWindow::create(*application_);
  ASSERT_TRUE(mainWindow_);
  graphics_ = std::make_unique<GraphicsWatch>(window());
  hand_ = std::make_unique<Hand>(Desktop::current().display(), window());
  mainWindow_->show();
  ASSERT_TRUE(until([this] { return window().isActive() && window().isExposed(); }));
  ASSERT_EQ(window().effectiveDevicePixelRatio(), 1);
  // Where it points to nothing.
  hand().moveTo({2, window().height() - 2.0});
  ASSERT_TRUE(comesToRest());
}

void WindowStage::open(const std::filesystem::path& package) {
  ASSERT_NO_FATAL_FAILURE(start({.mode = RootMode::edit, .package = package}));
  ASSERT_TRUE(session().hasProject()) << session().loadError().toStdString();
}

void WindowStage::quit() {
  if (!mainWindow_) return;
  hand_.reset();
  // Tells of the end, and leaves the window open.
  QTimer::singleShot(0, qGuiApp, [] { QCoreApplication::exit(); });
  QCoreApplication::exec();
  // Or the application stays the active one, and the next window does not make it that.
  window().hide();
  EXPECT_TRUE(until([] { return QGuiApplication::applicationState() != Qt::ApplicationActive; }));
  mainWindow_.reset();
  EXPECT_TRUE(graphics_->hasListened());
  EXPECT_EQ(graphics_->messages(), std::vector<std::string>());
  graphics_.reset();
  application_.reset();
}

editor::TimelineView& WindowStage::timeline() {
  return *application_->properties()
              .value(QStringLiteral("timeline"))
              .value<editor::TimelineView*>();
}

bool WindowStage::isShown(const QString& name) const {
  const QQuickItem* const found = itemIn(*mainWindow_->window().contentItem(), name);
  return found != nullptr && found->isVisible();
}

QQuickItem& WindowStage::item(const QString& name) const {
  QQuickItem* const found = itemIn(*mainWindow_->window().contentItem(), name);
  if (found == nullptr) throw std::runtime_error("there is no " + name.toStdString());
  return *found;
}

void WindowStage::layOut() {
  // Rows and columns place what is in them just before a frame, and those in them before the next.
  for (int frame = 0; frame < 2; ++frame) {
    bool isDrawn = false;
    // The signal comes from the thread that draws, by way of the event loop. What is still on that
    // way at the end goes with its receiver.
    const QObject receiver;
    QObject::connect(&window(), &QQuickWindow::frameSwapped, &receiver,
                     [&isDrawn] { isDrawn = true; });
    window().update();
    EXPECT_TRUE(until([&isDrawn] { return isDrawn; }));
  }
}

QPointF WindowStage::place(const QString& name, QPointF point) {
  layOut();
  return item(name).mapToScene(point);
}

QPointF WindowStage::place(const QString& name) {
  layOut();
  return item(name).mapToScene(item(name).boundingRect().center());
}

std::vector<motion::ZoomSegment> WindowStage::segments() {
  std::vector<motion::ZoomSegment> segments = session().timeline().segments;
  std::ranges::sort(segments, {}, &motion::ZoomSegment::start);
  return segments;
}

std::optional<package::EditDocument> WindowStage::saved(
    const std::filesystem::path& package) const {
  const auto loaded = package::EditDocument::load(package, package::Timestamp{});
  return loaded.ok() != nullptr ? std::optional(*loaded.ok()) : std::nullopt;
}

int WindowStage::framesIn(std::chrono::milliseconds time) {
  int frames = 0;
  QEventLoop loop;
  QObject::connect(&window(), &QQuickWindow::frameSwapped, &loop, [&frames] { ++frames; });
  QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
  loop.exec();
  return frames;
}

bool WindowStage::comesToRest() {
  for (int attempt = 0; attempt < 100; ++attempt) {
    if (framesIn(200ms) == 0) return true;
  }
  return false;
}

}  // namespace vesk::app::test
