#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "layers/IncludeRules.h"

namespace vesk::layers {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Include quoted(std::string path) {
  return {.path = std::move(path), .isQuoted = true, .line = 1};
}
Include bracketed(std::string path) {
  return {.path = std::move(path), .isQuoted = false, .line = 1};
}

TEST(Includes, areFoundWithTheirLines) {
  EXPECT_THAT(includesIn("#pragma once\n\n#include <array>\n  # include \"a/B.h\" // why\n"),
              ElementsAre(Include{"array", false, 3}, Include{"a/B.h", true, 4}));
}

TEST(Includes, inACommentAreNone) {
  EXPECT_THAT(includesIn("// #include \"a/B.h\"\n/// see #include <x>\n"), IsEmpty());
}

TEST(RelativeIncludes, areRefused) {
  for (const auto* path : {"Log.h", "./Log.h", "../package/Log.h", "package/../motion/Ease.h",
                           "/usr/include/zlib.h"}) {
    EXPECT_TRUE(relativeIncludeBreach("src/package/Log.cpp", quoted(path))) << path;
  }
}

TEST(RelativeIncludes, fromTheRootAndOfTheSystemAreNone) {
  EXPECT_FALSE(relativeIncludeBreach("src/package/Log.cpp", quoted("package/Log.h")));
  EXPECT_FALSE(relativeIncludeBreach("src/package/Log.cpp", bracketed("array")));
}

TEST(RelativeIncludes, mayNameTheShadersOfTheirOwnLayer) {
  const auto shaders = quoted("vesk_compositor_shaders.h");
  EXPECT_FALSE(relativeIncludeBreach("src/compositor/Pipelines.cpp", shaders));
  EXPECT_TRUE(relativeIncludeBreach("src/export/Pipelines.cpp", shaders));
}

/// For each layer, the layers that it may include.
const std::vector<std::pair<std::string, std::string>>& allowedPairs() {
  static const std::vector<std::pair<std::string, std::string>> pairs{
      {"motion", "package"},    {"media", "package"},     {"media", "motion"},
      {"gpu", "package"},       {"gpu", "motion"},        {"compositor", "package"},
      {"compositor", "motion"}, {"compositor", "media"},  {"compositor", "gpu"},
      {"export", "package"},    {"export", "motion"},     {"export", "media"},
      {"export", "gpu"},        {"export", "compositor"}, {"capture", "package"},
      {"capture", "media"},     {"editor", "package"},    {"editor", "motion"},
      {"editor", "media"},      {"editor", "gpu"},        {"editor", "compositor"},
      {"editor", "export"},     {"app", "package"},       {"app", "motion"},
      {"app", "media"},         {"app", "gpu"},           {"app", "compositor"},
      {"app", "export"},        {"app", "capture"},       {"app", "editor"},
  };
  return pairs;
}

TEST(Layers, buildOnTheLayersBelowAndOnNoOthers) {
  const std::vector<std::string> layers{"package", "motion",  "media",  "gpu", "compositor",
                                        "export",  "capture", "editor", "app"};
  for (const auto& from : layers) {
    for (const auto& to : layers) {
      const bool isAllowed =
          from == to || testing::Value(allowedPairs(), testing::Contains(std::pair{from, to}));
      EXPECT_EQ(!layerBreach("src/" + from + "/File.cpp", quoted(to + "/Type.h")), isAllowed)
          << from << " includes " << to;
    }
  }
}

TEST(Layers, pointUpAlsoThroughBracketsAndDeeperDirectories) {
  EXPECT_TRUE(layerBreach("src/package/File.cpp", bracketed("motion/CameraEase.h")));
  EXPECT_TRUE(layerBreach("src/capture/x11/File.cpp", quoted("compositor/FrameLayout.h")));
}

TEST(Layers, anUnknownLayerIsRefusedOnBothSides) {
  EXPECT_TRUE(layerBreach("src/common/File.cpp", quoted("package/Log.h")));
  EXPECT_TRUE(layerBreach("src/package/File.cpp", quoted("common/Strings.h")));
}

TEST(Layers, takeSystemHeadersAsNoLayer) {
  EXPECT_FALSE(layerBreach("src/package/File.cpp", bracketed("vector")));
  EXPECT_FALSE(layerBreach("src/package/File.cpp", bracketed("sys/stat.h")));
}

struct Ownership {
  const char* header;
  const char* owner;
  std::vector<const char*> strangers;
};

TEST(Backends, keepTheirSystemHeadersToThemselves) {
  const std::vector<Ownership> ownerships{
      {"libavcodec/avcodec.h",
       "src/media/VideoReader.cpp",
       {"src/media/VideoReader.h", "src/export/Writer.cpp"}},
      {"libswscale/swscale.h", "src/media/Scaler.cpp", {"src/gpu/Texture.cpp"}},
      {"epoxy/gl.h", "src/gpu/Texture.cpp", {"src/gpu/Texture.h", "src/compositor/Draw.cpp"}},
      {"EGL/egl.h", "src/gpu/Context.cpp", {"src/app/Main.cpp"}},
      {"GL/gl.h", "src/gpu/Context.cpp", {"src/media/VideoReader.cpp"}},
      {"cairo/cairo.h",
       "src/compositor/CursorImage.cpp",
       {"src/compositor/CursorImage.h", "src/compositor/RippleOverlay.cpp"}},
      {"cairo.h", "src/compositor/CursorImage.cpp", {"src/gpu/Texture.cpp"}},
      {"systemd/sd-journal.h", "src/package/Log.cpp", {"src/package/Log.h", "src/app/Main.cpp"}},
      {"spdlog/sinks/systemd_sink.h", "src/package/Log.cpp", {"src/app/Main.cpp"}},
      {"X11/Xlib.h",
       "src/capture/x11/Screen.cpp",
       {"src/capture/Session.cpp", "src/capture/x11/Screen.h"}},
      {"xcb/xcb.h", "src/capture/x11/Screen.cpp", {"src/editor/Preview.cpp"}},
      {"pipewire/pipewire.h",
       "src/capture/pipewire/Stream.cpp",
       {"src/media/Stream.cpp", "src/capture/x11/Screen.cpp"}},
      {"spa/pod/builder.h", "src/media/pipewire/Connection.cpp", {"src/app/Main.cpp"}},
      {"QString",
       "src/app/Main.cpp",
       {"src/package/Log.cpp", "src/motion/Ease.cpp", "src/export/Job.cpp"}},
      {"QtCore/QObject", "src/editor/Preview.h", {"src/compositor/Draw.cpp"}},
      {"QtQuick", "src/capture/Session.h", {"src/gpu/Texture.h"}},
  };
  for (const auto& [header, owner, strangers] : ownerships) {
    EXPECT_FALSE(backendBreach(owner, bracketed(header))) << header << " in " << owner;
    for (const auto* stranger : strangers) {
      EXPECT_TRUE(backendBreach(stranger, bracketed(header))) << header << " in " << stranger;
    }
  }
}

TEST(Backends, leaveOtherHeadersAlone) {
  for (const auto* header : {"vector", "glm/vec2.hpp", "spdlog/logger.h", "sys/stat.h"}) {
    EXPECT_FALSE(backendBreach("src/package/Log.h", bracketed(header))) << header;
  }
}

}  // namespace
}  // namespace vesk::layers
