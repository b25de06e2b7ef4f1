#include "capture/x11/TestDisplay.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <stdexcept>
#include <thread>
#include <utility>

#include "capture/x11/Eventually.h"

namespace vesk::capture::x11::test {
namespace {

/// What comes through the descriptor up to the end of its first line.
std::string readLine(int source) {
  std::string line;
  char letter = 0;
  while (::read(source, &letter, 1) == 1 && letter != '\n') line += letter;
  return line;
}

/// Whether a window manager takes a new window over. It may miss one while it starts.
bool managesWindows(const Connection& connection) {
  const std::uint32_t mark = connection.atom("WM_STATE");
  const std::uint32_t window = xcb_generate_id(connection.get());
  xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, window, connection.root(), 0, 0, 9, 9,
                    0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_map_window(connection.get(), window);
  bool isManaged = false;
  for (int attempt = 0; attempt < 20 && !isManaged; ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds{5});
    isManaged = connection.property(window, mark).has_value();
  }
  xcb_destroy_window(connection.get(), window);
  return isManaged;
}

}  // namespace

TestDisplay::TestDisplay(const Options& options) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  std::vector<std::string> command{
      "Xvfb",    "-displayfd", fmt::format("{}", ends[1]),
      "-screen", "0",          fmt::format("{}x{}x24", options.width, options.height),
      "-dpi",    "96",         "-nolisten",
      "tcp",     "-noreset",   "-ac"};
  command.insert(command.end(), options.arguments.begin(), options.arguments.end());
  server_ = std::make_unique<ChildProgram>(std::move(command), std::vector<std::string>{}, ends[1]);
  ::close(ends[1]);
  const std::string number = readLine(ends[0]);
  ::close(ends[0]);
  if (number.empty()) throw std::runtime_error("Xvfb did not start");
  name_ = ":" + number;

  auto connection = Connection::open(name_);
  if (!connection) throw std::runtime_error("Xvfb does not answer");
  connection_ = std::make_unique<Connection>(std::move(*connection));
  if (!options.hasWindowManager) return;
  start({"openbox", "--sm-disable"});
  if (!eventually([&] { return managesWindows(*connection_); })) {
    throw std::runtime_error("openbox did not start");
  }
}

TestDisplay::~TestDisplay() {
  thaw();
  programs_.clear();
  connection_.reset();
  if (nameSocket_ >= 0) ::close(nameSocket_);
}

ChildProgram& TestDisplay::start(std::vector<std::string> command) {
  programs_.push_back(std::make_unique<ChildProgram>(std::move(command), environment()));
  return *programs_.back();
}

int TestDisplay::run(std::vector<std::string> command) const {
  return ChildProgram{std::move(command), environment()}.finish();
}

std::vector<std::string> TestDisplay::environment() const {
  return {"DISPLAY=" + name_};
}

void TestDisplay::sync() const {
  owned(xcb_get_input_focus_reply(connection_->get(), xcb_get_input_focus(connection_->get()),
                                  nullptr));
}

void TestDisplay::kill() {
  server_->send(SIGKILL);
  server_->finish();
  keepName();
}

// Tests run beside each other, and a server takes the first name whose socket is free. This one
// hears nobody, so that whoever connects is refused.
void TestDisplay::keepName() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  // The leading zero makes it a name of the kernel's and not a file.
  const std::string path = fmt::format("{}/tmp/.X11-unix/X{}", '\0', name_.substr(1));
  std::ranges::copy(path, address.sun_path);
  nameSocket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  if (::bind(nameSocket_, reinterpret_cast<const sockaddr*>(&address), length) != 0) {
    throw std::runtime_error("another server took the name " + name_);
  }
}

void TestDisplay::freeze() const {
  server_->send(SIGSTOP);
}

void TestDisplay::thaw() const {
  server_->send(SIGCONT);
}

}  // namespace vesk::capture::x11::test
