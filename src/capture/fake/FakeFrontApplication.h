#pragma once

#include <mutex>

#include "capture/FrontApplication.h"

namespace vesk::capture::fake {

/// A desktop on which a test brings applications to the front. May be used from any thread.
class FakeFrontApplication final : public FrontApplication {
 public:
  explicit FakeFrontApplication(Name name = std::nullopt) : name_{std::move(name)} {}

  Name name() const override;
  std::expected<std::unique_ptr<Listening>, BackendError> listen(Callback callback) override;

  /// Calls back on this thread.
  void activate(const Name& name);
  /// From now on nobody can listen.
  void fail(BackendError error);

 private:
  Listeners<const Name&> listeners_;
  mutable std::mutex mutex_;  ///< guards what follows
  Name name_;
  std::optional<BackendError> failure_;
};

}  // namespace vesk::capture::fake
