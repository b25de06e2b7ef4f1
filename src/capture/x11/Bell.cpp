#include "capture/x11/Bell.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace vesk::capture::x11 {

Bell::Bell() : descriptor_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)} {}

Bell::~Bell() {
  ::close(descriptor_);
}

void Bell::ring() const {
  ::eventfd_write(descriptor_, 1);
}

void Bell::silence() const {
  eventfd_t count = 0;
  ::eventfd_read(descriptor_, &count);
}

}  // namespace vesk::capture::x11
