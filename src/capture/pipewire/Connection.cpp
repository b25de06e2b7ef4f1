#include "capture/pipewire/Connection.h"

#include <pipewire/pipewire.h>

#include <cerrno>
#include <utility>

namespace vesk::capture::pipewire {
namespace {

constexpr std::chrono::milliseconds longestAnswer{1000};

}  // namespace

class Connection::CoreListener {
 public:
  explicit CoreListener(Connection& connection) : connection_{connection} {
    pw_core_add_listener(connection.core(), &hook_, &events(), this);
  }
  CoreListener(const CoreListener&) = delete;
  CoreListener& operator=(const CoreListener&) = delete;
  ~CoreListener() { spa_hook_remove(&hook_); }

 private:
  static const pw_core_events& events() {
    static const pw_core_events events{
        .version = PW_VERSION_CORE_EVENTS,
        .done = [](void* self, std::uint32_t id,
                   int sequence) { static_cast<CoreListener*>(self)->onDone(id, sequence); },
        .error =
            [](void* self, std::uint32_t id, int /*sequence*/, int result,
               const char* /*message*/) { static_cast<CoreListener*>(self)->onError(id, result); }};
    return events;
  }

  void onDone(std::uint32_t id, int sequence) {
    if (id != PW_ID_CORE) return;
    connection_.answered_ = sequence;
    connection_.wake();
  }

  /// Errors of single objects come here as well; those objects tell of them themselves.
  void onError(std::uint32_t id, int result) {
    if (id != PW_ID_CORE || result != -EPIPE || connection_.isLost_.exchange(true)) return;
    connection_.wake();
    if (connection_.onLoss_) connection_.onLoss_();
  }

  Connection& connection_;
  spa_hook hook_{};
};

Connection::Library::Library() {
  pw_init(nullptr, nullptr);
}

Connection::Library::~Library() {
  pw_deinit();
}

void Connection::Release::operator()(pw_thread_loop* loop) const noexcept {
  pw_thread_loop_destroy(loop);
}

void Connection::Release::operator()(pw_context* context) const noexcept {
  pw_context_destroy(context);
}

void Connection::Release::operator()(pw_core* core) const noexcept {
  pw_core_disconnect(core);
}

Connection::Lock::Lock(const Connection& connection) : loop_{connection.loop()} {
  pw_thread_loop_lock(loop_);
}

Connection::Lock::~Lock() {
  pw_thread_loop_unlock(loop_);
}

Connection::Connection(OnLoss onLoss) : onLoss_{std::move(onLoss)} {}

Connection::~Connection() {
  if (loop_) stop();
}

std::expected<std::unique_ptr<Connection>, BackendError> Connection::open(const std::string& remote,
                                                                          OnLoss onLoss) {
  std::unique_ptr<Connection> connection{new Connection{std::move(onLoss)}};
  if (!connection->connect(remote)) return std::unexpected(BackendError{"连接不上 PipeWire 服务"});
  return connection;
}

bool Connection::connect(const std::string& remote) {
  loop_.reset(pw_thread_loop_new("vesk-pipewire", nullptr));
  if (!loop_) return false;
  context_.reset(pw_context_new(pw_thread_loop_get_loop(loop_.get()), nullptr, 0));
  if (!context_) return false;
  pw_properties* properties = pw_properties_new(PW_KEY_APP_NAME, "Vesk", nullptr);
  if (!remote.empty()) pw_properties_set(properties, PW_KEY_REMOTE_NAME, remote.c_str());
  core_.reset(pw_context_connect(context_.get(), properties, 0));
  if (!core_) return false;
  listener_ = std::make_unique<CoreListener>(*this);
  if (pw_thread_loop_start(loop_.get()) < 0) return false;
  const Lock lock{*this};
  return roundTrip();
}

bool Connection::roundTrip() {
  const int sequence = pw_core_sync(core(), PW_ID_CORE, 0);
  return waitUntil([&] { return answered_ == sequence; }, longestAnswer) && !isLost();
}

bool Connection::waitUntil(const std::function<bool()>& condition,
                           std::chrono::milliseconds longest) {
  timespec end{};
  pw_thread_loop_get_time(loop(), &end, std::chrono::nanoseconds{longest}.count());
  while (!isLost() && !condition()) {
    if (pw_thread_loop_timed_wait_full(loop(), &end) < 0) break;
  }
  return condition();
}

void Connection::wake() {
  pw_thread_loop_signal(loop(), false);
}

void Connection::stop() {
  pw_thread_loop_stop(loop());
}

}  // namespace vesk::capture::pipewire
