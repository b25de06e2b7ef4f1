#include "capture/pipewire/CameraStream.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include "capture/pipewire/CameraFailure.h"

namespace vesk::capture::pipewire {

using media::pipewire::Connection;
namespace {

constexpr std::chrono::milliseconds longestStart{1500};

CameraRefusal refusal(std::string message) {
  return {.cause = CameraRefusal::Cause::other, .message = std::move(message)};
}

}  // namespace

CameraStream::CameraStream(CameraStreamRequest request, CameraSource::OnFrame onFrame,
                           CameraSource::OnEnd onEnd)
    : request_{std::move(request)}, onFrame_{std::move(onFrame)}, gate_{std::move(onEnd)} {}

CameraStream::~CameraStream() {
  gate_.close();  // what still waits to be delivered must not hold up the rest
  if (connection_) connection_->stop();
}

std::expected<std::unique_ptr<Listening>, CameraRefusal> CameraStream::open(
    const CameraStreamRequest& request, CameraSource::OnFrame onFrame, CameraSource::OnEnd onEnd) {
  std::unique_ptr<CameraStream> stream{
      new CameraStream{request, std::move(onFrame), std::move(onEnd)}};
  if (auto started = stream->start(); !started) return std::unexpected(started.error());
  return stream;
}

std::expected<void, CameraRefusal> CameraStream::start() {
  connection_ = Connection::openAnswered(request_.remote,
                                         [this] { fail(refusal("与 PipeWire 服务的连接已断开")); });
  if (!connection_) return std::unexpected(refusal("连接不上 PipeWire 服务"));
  registry_ = std::make_unique<Registry>(*connection_, [this] { onRegistryChange(); });

  const Connection::Lock lock{*connection_};
  const auto cameras = registry_->nodesOf(cameraClass);
  const auto camera = std::ranges::find(cameras, request_.nodeName, &Node::name);
  if (camera == cameras.end()) return std::unexpected(refusal("找不到这个摄像头"));
  nodeId_ = camera->id;
  const auto onError = [this](const std::string& error) { fail(cameraFailure(error)); };
  node_ = std::make_unique<CameraNode>(*connection_, camera->id, request_.size, onError);
  const auto format = camera::bestFormat(node_->formats(), request_.size);
  if (!format) return std::unexpected(refusal("摄像头没有可用的画面格式"));
  const auto onFrame = [this](const CameraFrame& frame) {
    if (!std::exchange(hasFrames_, true)) connection_->wake();
    gate_.pass([&] { onFrame_(frame); });
  };
  stream_ = std::make_unique<VideoStream>(
      *connection_, VideoStream::Callbacks{.onFrame = onFrame, .onError = onError});
  links_ = std::make_unique<LinkWatch>(
      *connection_,
      LinkWatch::Callbacks{.streamNode = [this] { return stream_->nodeId(); }, .onError = onError});
  if (!stream_->connect(*camera, *format)) return std::unexpected(refusal("PipeWire 拒绝了摄像头"));
  connection_->waitUntil([this] { return failure_ || hasFrames_; }, longestStart);
  if (failure_) return std::unexpected(*failure_);
  static_cast<void>(gate_.open());  // nothing can have ended it under the lock
  return {};
}

void CameraStream::onRegistryChange() {
  if (nodeId_ && !registry_->has(*nodeId_)) fail(refusal("摄像头已断开"));
}

void CameraStream::fail(const CameraRefusal& reason) {
  if (failure_) return;
  failure_ = reason;
  if (nodeId_) connection_->wake();  // a loss wakes by itself
  gate_.end({reason.message});
}

}  // namespace vesk::capture::pipewire
