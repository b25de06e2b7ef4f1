#include "media/pipewire/Connection.h"

#include <pipewire/pipewire.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <utility>

namespace vesk::media::pipewire {
namespace {

constexpr std::chrono::milliseconds longestAnswer{1000};
constexpr std::chrono::milliseconds longestEntry{200};

/// Waits until a context's data thread runs. PipeWire loses the word that ends that thread where it
/// comes as the thread enters its loop, and then waits for it for ever. Newer versions start the
/// thread when it is needed only: one that does not come in a while is none.
void awaitDataThread(pw_context* context) {
  const auto tellThread = [](spa_loop* /*loop*/, bool /*async*/, std::uint32_t /*sequence*/,
                             const void* /*data*/, std::size_t /*size*/, void* thread) {
    *static_cast<std::thread::id*>(thread) = std::this_thread::get_id();
    return 0;
  };
  pw_data_loop* const dataLoop = pw_context_get_data_loop(context);
  if (dataLoop == nullptr) return;
  const auto own = std::this_thread::get_id();
  const auto end = std::chrono::steady_clock::now() + longestEntry;
  for (auto ranOn = own; ranOn == own && std::chrono::steady_clock::now() < end;) {
    pw_data_loop_invoke(dataLoop, tellThread, 0, nullptr, 0, true, &ranOn);
    if (ranOn == own) std::this_thread::sleep_for(std::chrono::milliseconds{1});
  }
}

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
  awaitDataThread(context);
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

std::unique_ptr<Connection> Connection::open(const std::string& remote, OnLoss onLoss) {
  std::unique_ptr<Connection> connection{new Connection{std::move(onLoss)}};
  return connection->connect(remote) ? std::move(connection) : nullptr;
}

std::unique_ptr<Connection> Connection::openAnswered(const std::string& remote, OnLoss onLoss) {
  auto connection = open(remote, std::move(onLoss));
  if (!connection) return nullptr;
  const bool answers = [&] {
    const Lock lock{*connection};
    return connection->roundTrip();
  }();
  return answers ? std::move(connection) : nullptr;
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
  return pw_thread_loop_start(loop_.get()) >= 0;
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

}  // namespace vesk::media::pipewire
