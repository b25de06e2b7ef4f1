#include "capture/pipewire/TestSoundServer.h"

#include <fmt/format.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "capture/x11/Eventually.h"

namespace vesk::capture::pipewire::test {

using x11::test::ChildProgram;
using x11::test::eventually;

TestSoundServer::TestSoundServer() {
  directory_.put("wireplumber/main.lua.d/51-no-hardware.lua",
                 "alsa_monitor.enabled = false\n"
                 "v4l2_monitor.enabled = false\n"
                 "libcamera_monitor.enabled = false\n");
  directory_.put("wireplumber/bluetooth.lua.d/51-no-hardware.lua",
                 "bluez_monitor.enabled = false\n");
  bus_ = start({"dbus-daemon", "--session", "--nofork", "--nopidfile",
                "--address=unix:path=" + (directory_ / "bus").string()});
  if (!eventually([&] { return std::filesystem::exists(directory_ / "bus"); })) {
    throw std::runtime_error("dbus-daemon did not start");
  }
  startServer();
}

void TestSoundServer::startServer() {
  server_ = start({"pipewire"});
  if (!eventually([&] { return std::filesystem::exists(remote()); })) {
    throw std::runtime_error("pipewire did not start");
  }
  sessionManager_ = start({"wireplumber"});
  // The session manager makes the list of the defaults; until it is there nothing can be set in it.
  if (!eventually([&] { return start({"pw-metadata", "0"})->finish() == 0; })) {
    throw std::runtime_error("wireplumber did not start");
  }
}

TestSoundServer::~TestSoundServer() {
  thaw();
}

std::string TestSoundServer::remote() const {
  return directory_ / "pipewire-0";
}

std::vector<std::string> TestSoundServer::environment() const {
  const std::string directory = directory_.path();
  return {"XDG_RUNTIME_DIR=" + directory,
          "XDG_CONFIG_HOME=" + directory,
          "XDG_STATE_HOME=" + directory,
          "HOME=" + directory,
          "PIPEWIRE_RUNTIME_DIR=" + directory,
          "DBUS_SESSION_BUS_ADDRESS=unix:path=" + directory + "/bus"};
}

void TestSoundServer::setDefaultSink(const std::string& nodeName) const {
  setDefault("default.configured.audio.sink", nodeName);
}

void TestSoundServer::setDefaultSource(const std::string& nodeName) const {
  setDefault("default.configured.audio.source", nodeName);
}

void TestSoundServer::setDefault(const std::string& key, const std::string& nodeName) const {
  const std::string value = fmt::format(R"({{ "name": "{}" }})", nodeName);
  if (start({"pw-metadata", "0", key, value, "Spa:String:JSON"})->finish() != 0) {
    throw std::runtime_error("pw-metadata failed");
  }
}

void TestSoundServer::kill() {
  server_->send(SIGKILL);
  server_->finish();
}

void TestSoundServer::restart() {
  sessionManager_.reset();
  std::filesystem::remove(remote());
  startServer();
}

void TestSoundServer::freeze() const {
  server_->send(SIGSTOP);
}

void TestSoundServer::thaw() const {
  server_->send(SIGCONT);
}

std::unique_ptr<ChildProgram> TestSoundServer::start(std::vector<std::string> command) const {
  return std::make_unique<ChildProgram>(std::move(command), environment());
}

}  // namespace vesk::capture::pipewire::test
