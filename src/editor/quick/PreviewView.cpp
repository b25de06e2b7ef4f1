#include "editor/quick/PreviewView.h"

#include <QQuickWindow>
#include <QSGSimpleTextureNode>
#include <QScreen>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>

#include "editor/PreviewPainter.h"
#include "gpu/Device.h"
#include "package/Log.h"

namespace vesk::editor {
namespace {

/// For so long before the display's next picture the session is told to go on: what follows, the
/// window system's own delay included, is to begin before the display waits.
constexpr double headStart = 1.0 / 150;
constexpr double usualRefreshRate = 60;

/// From the start of one frame until the next one is to be begun.
std::chrono::milliseconds untilNextTick(const QQuickWindow* window) {
  const QScreen* const screen = window == nullptr ? nullptr : window->screen();
  const double told = screen == nullptr ? 0 : screen->refreshRate();
  const double rate = told > 1 ? told : usualRefreshRate;
  const std::chrono::duration<double> wait{std::max(1 / rate - headStart, 0.0)};
  return std::chrono::duration_cast<std::chrono::milliseconds>(wait);
}

/// The item's part of the scene graph: painter and texture live and die with it, on the thread
/// that draws.
class PreviewNode : public QSGSimpleTextureNode {
 public:
  explicit PreviewNode(QQuickWindow& window) : window_(window) {
    setOwnsTexture(false);
    setFiltering(QSGTexture::Linear);
    drawing_ = QObject::connect(
        &window, &QQuickWindow::beforeRendering, &window, [this] { draw(); }, Qt::DirectConnection);
  }
  PreviewNode(const PreviewNode&) = delete;
  PreviewNode& operator=(const PreviewNode&) = delete;
  ~PreviewNode() override { QObject::disconnect(drawing_); }

  /// False when this context cannot draw.
  bool prepare() {
    if (painter_) return true;
    auto device = gpu::Device::current();
    if (!device) return fail(device.error());
    device_.emplace(*std::move(device));
    auto painter = PreviewPainter::create(*device_);
    if (!painter) return fail(painter.error());
    painter_ = std::move(*painter);
    return true;
  }

  /// False when there is not the memory for the picture; the node cannot be shown then.
  bool take(const PreviewController& session, const QRectF& place, QSize pixels) {
    setRect(place);
    painter_->take(session, pixels.width(), pixels.height());
    // The texture must be there when the scene is put together, its pixels only when it is drawn.
    return wrapTexture();
  }

 private:
  static bool fail(const gpu::GpuError& error) {
    package::log(package::LogCategory::render).error("preview: {}", error.message);
    return false;
  }

  bool wrapTexture() {
    const gpu::Texture* const drawn = painter_->fitTexture();
    if (drawn == nullptr) return false;
    if (wrappedHandle_ == drawn->handle()) return true;
    std::unique_ptr<QSGTexture> wrapped(QNativeInterface::QSGOpenGLTexture::fromNative(
        drawn->handle(), &window_, {drawn->width(), drawn->height()}));
    setTexture(wrapped.get());
    wrapped_ = std::move(wrapped);
    wrappedHandle_ = drawn->handle();
    return true;
  }

  void draw() {
    if (!painter_ || !painter_->isStale()) return;
    window_.beginExternalCommands();
    painter_->draw();
    window_.endExternalCommands();
    markDirty(DirtyMaterial);
  }

  QQuickWindow& window_;
  QMetaObject::Connection drawing_;
  std::optional<gpu::Device> device_;
  std::unique_ptr<PreviewPainter> painter_;
  std::unique_ptr<QSGTexture> wrapped_;
  unsigned int wrappedHandle_ = 0;
};

}  // namespace

PreviewView::PreviewView(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
  nextTick_.setSingleShot(true);
  nextTick_.setTimerType(Qt::PreciseTimer);
}

void PreviewView::setController(PreviewController* controller) {
  if (controller == controller_) return;
  if (controller_ != nullptr) {
    controller_->disconnect(this);
    disconnect(controller_);
    nextTick_.disconnect(controller_);
    nextTick_.stop();
  }
  controller_ = controller;
  if (controller_ != nullptr) {
    connect(controller_, &PreviewController::pictureChanged, this, &QQuickItem::update);
    connect(&nextTick_, &QTimer::timeout, controller_, &PreviewController::tick);
    connect(this, &PreviewView::rendererFailed, controller_, &PreviewController::loseRenderer,
            Qt::QueuedConnection);
  }
  watchWindow(window());
  update();
  Q_EMIT controllerChanged();
}

void PreviewView::itemChange(ItemChange change, const ItemChangeData& value) {
  if (change == ItemSceneChange) watchWindow(value.window);
  if (change == ItemDevicePixelRatioHasChanged) update();
  QQuickItem::itemChange(change, value);
}

void PreviewView::watchWindow(QQuickWindow* window) {
  disconnect(frames_);
  if (window == nullptr || controller_ == nullptr) return;
  frames_ = connect(window, &QQuickWindow::afterAnimating, this, &PreviewView::beginWaiting);
}

void PreviewView::beginWaiting() {
  if (!controller_->isPlaying() || nextTick_.isActive()) return;
  nextTick_.start(untilNextTick(window()));
}

QSGNode* PreviewView::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/) {
  const QSize pixels(static_cast<int>(std::ceil(width() * window()->effectiveDevicePixelRatio())),
                     static_cast<int>(std::ceil(height() * window()->effectiveDevicePixelRatio())));
  if (controller_ == nullptr || !controller_->hasRenderer() || pixels.isEmpty()) {
    delete node;
    return nullptr;
  }
  auto* preview = static_cast<PreviewNode*>(node);
  if (preview == nullptr) preview = new PreviewNode(*window());
  if (!preview->prepare()) {
    delete preview;
    Q_EMIT rendererFailed();
    return nullptr;
  }
  if (!preview->take(*controller_, boundingRect(), pixels)) {
    delete preview;
    return nullptr;
  }
  return preview;
}

}  // namespace vesk::editor
