#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

struct pw_context;
struct pw_core;
struct pw_thread_loop;

namespace vesk::media::pipewire {

/// A connection of its owner's own to PipeWire, with a thread that serves it. What is made over it
/// must go before it. Whoever touches such things from another thread holds a Lock.
class Connection {
 public:
  using OnLoss = std::function<void()>;

  /// Does not wait for the server: one that stands still is connected to as well.
  /// @param remote the path of the server's socket, or its name; empty for that of the environment.
  /// @param onLoss is called at most once, on the connection's thread, when the server goes away.
  /// @return null where no server is there.
  [[nodiscard]] static std::unique_ptr<Connection> open(const std::string& remote,
                                                        OnLoss onLoss = {});
  /// As open(), but null also where the server does not answer within a second.
  [[nodiscard]] static std::unique_ptr<Connection> openAnswered(const std::string& remote,
                                                                OnLoss onLoss = {});

  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  [[nodiscard]] pw_core* core() const noexcept { return core_.get(); }
  [[nodiscard]] pw_thread_loop* loop() const noexcept { return loop_.get(); }

  /// Keeps the connection's thread from running while it lives. Locks may be nested.
  class [[nodiscard]] Lock {
   public:
    explicit Lock(const Connection& connection);
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock();

   private:
    pw_thread_loop* loop_;
  };

  /// Waits until the server has done all that it was asked for. False when that takes too long or
  /// the server has gone. Needs a lock, held once, which is given up meanwhile.
  bool roundTrip();
  /// Waits under a lock, held once, until something calls wake() and the condition holds.
  bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds longest);
  /// Makes waitUntil() look again; on the connection's thread.
  void wake();

  [[nodiscard]] bool isLost() const noexcept { return isLost_; }
  /// Ends the thread: afterwards everything over the connection can be taken down without a lock.
  void stop();

 private:
  class CoreListener;
  struct Library {
    Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library();
  };
  struct Release {
    void operator()(pw_thread_loop* loop) const noexcept;
    void operator()(pw_context* context) const noexcept;
    void operator()(pw_core* core) const noexcept;
  };

  explicit Connection(OnLoss onLoss);
  bool connect(const std::string& remote);

  Library library_;
  OnLoss onLoss_;
  std::atomic<bool> isLost_ = false;
  int answered_ = 0;  ///< the latest round trip that came back
  std::unique_ptr<pw_thread_loop, Release> loop_;
  std::unique_ptr<pw_context, Release> context_;
  std::unique_ptr<pw_core, Release> core_;
  std::unique_ptr<CoreListener> listener_;
};

}  // namespace vesk::media::pipewire
