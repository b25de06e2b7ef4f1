#include "layers/IncludeRules.h"

#include <algorithm>
#include <array>
#include <regex>
#include <vector>

namespace vesk::layers {
namespace {

struct Layer {
  std::string_view name;
  std::vector<std::string_view> below;  ///< the layers that it may build on
};

const std::vector<Layer>& allLayers() {
  static const std::vector<Layer> layers{
      {"package", {}},
      {"motion", {"package"}},
      {"media", {"package", "motion"}},
      {"gpu", {"package", "motion"}},
      {"compositor", {"package", "motion", "media", "gpu"}},
      {"export", {"package", "motion", "media", "gpu", "compositor"}},
      {"capture", {"package", "media"}},
      {"editor", {"package", "motion", "media", "gpu", "compositor", "export"}},
      {"app", {"package", "motion", "media", "gpu", "compositor", "export", "capture", "editor"}},
  };
  return layers;
}

const Layer* layerNamed(std::string_view name) {
  const auto found = std::ranges::find(allLayers(), name, &Layer::name);
  return found == allLayers().end() ? nullptr : &*found;
}

/// The directory behind "src/".
std::string_view layerOf(std::string_view file) {
  constexpr std::string_view root = "src/";
  if (!file.starts_with(root)) return {};
  file.remove_prefix(root.size());
  return file.substr(0, file.find('/'));
}

struct Backend {
  std::string_view library;
  std::regex headers;
  std::regex owner;  ///< the files that may include the headers
};

const std::vector<Backend>& allBackends() {
  static const std::vector<Backend> backends{
      {"FFmpeg", std::regex{R"(lib(av|sw|postproc)\w*/.*)"}, std::regex{R"(src/media/.*\.cpp)"}},
      {"OpenGL", std::regex{R"((epoxy|EGL|GL|GLES\d?|KHR|glad)/.*)"},
       std::regex{R"(src/gpu/.*\.cpp)"}},
      {"Cairo", std::regex{R"((cairo/)?cairo.*)"},
       std::regex{R"(src/compositor/CursorImage\.cpp)"}},
      {"systemd", std::regex{R"(systemd/.*|spdlog/sinks/systemd_sink\.h)"},
       std::regex{R"(src/package/Log\.cpp|src/capture/x11/AccessibilityBus\.cpp)"}},
      {"the display server", std::regex{R"((X11|xcb)/.*)"},
       std::regex{R"(src/capture/[^/]+/.*\.cpp)"}},
      {"PipeWire", std::regex{R"((pipewire|spa)/.*)"},
       std::regex{R"(src/(media|capture|editor)/pipewire/.*\.cpp)"}},
      {"Qt", std::regex{R"(Qt?[A-Z]\w*(/.*)?)"}, std::regex{R"(src/(capture|editor|app)/.*)"}},
  };
  return backends;
}

bool matches(std::string_view text, const std::regex& pattern) {
  return std::regex_match(text.begin(), text.end(), pattern);
}

}  // namespace

std::optional<std::string> relativeIncludeBreach(std::string_view file, const Include& include) {
  if (!include.isQuoted) return std::nullopt;
  if (include.path == "vesk_" + std::string{layerOf(file)} + "_shaders.h") return std::nullopt;
  const bool isRelative = include.path.find('/') == std::string::npos ||
                          include.path.starts_with('/') ||
                          include.path.find("./") != std::string::npos;
  if (!isRelative) return std::nullopt;
  return "\"" + include.path + "\" is not written from src/";
}

std::optional<std::string> layerBreach(std::string_view file, const Include& include) {
  const auto* layer = layerNamed(layerOf(file));
  if (layer == nullptr) return "the file lies in no known layer";
  const auto target = std::string_view{include.path}.substr(0, include.path.find('/'));
  if (target == include.path || target == layer->name) return std::nullopt;
  const bool isLayer = layerNamed(target) != nullptr;
  if (!include.isQuoted && !isLayer) return std::nullopt;
  if (std::ranges::find(layer->below, target) != layer->below.end()) return std::nullopt;
  return std::string{layer->name} + " may not build on " + std::string{target};
}

std::optional<std::string> backendBreach(std::string_view file, const Include& include) {
  const auto backend = std::ranges::find_if(allBackends(), [&](const Backend& candidate) {
    return matches(include.path, candidate.headers);
  });
  if (backend == allBackends().end() || matches(file, backend->owner)) return std::nullopt;
  return "<" + include.path + "> belongs to the backend of " + std::string{backend->library};
}

}  // namespace vesk::layers
