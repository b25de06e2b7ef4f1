#include "app/SessionBus.h"

#include <filesystem>
#include <stdexcept>

#include "capture/x11/Eventually.h"

namespace vesk::app::test {

SessionBus::SessionBus()
    : daemon_({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address_}) {
  const auto isThere = [this] { return std::filesystem::exists(folder_ / "bus"); };
  if (!capture::x11::test::eventually(isThere)) {
    throw std::runtime_error("dbus-daemon did not start");
  }
}

}  // namespace vesk::app::test
