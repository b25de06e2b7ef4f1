#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "motion/MotionReport.h"
#include "motion/ReportText.h"

namespace vesk::motion {
namespace {

/// Writes compact JSON straight into one string: the track of a long recording has millions of
/// numbers, for which a document tree would cost many times the text.
class JsonWriter {
 public:
  explicit JsonWriter(std::size_t expectedLength) { text_.reserve(expectedLength); }

  std::string take() && { return std::move(text_); }

  /// An object; `members` calls member() for each of its members.
  template <typename Members>
  void object(Members members) {
    text_ += '{';
    members();
    text_ += '}';
  }

  /// The key of a member; its value is to follow.
  void key(std::string_view name) {
    if (text_.back() != '{') {
      text_ += ',';
    }
    value(name);
    text_ += ':';
  }

  template <typename Value>
  void member(std::string_view name, const Value& content) {
    key(name);
    value(content);
  }

  template <typename Range>
  void arrayMember(std::string_view name, const Range& range) {
    key(name);
    text_ += '[';
    std::string_view separator;
    for (const auto& element : range) {
      text_ += separator;
      value(element);
      separator = ",";
    }
    text_ += ']';
  }

 private:
  void value(double number) {
    if (std::isfinite(number)) {
      append(text_, "{}", number);  // the shortest decimal that reads back as this double
    } else {
      text_ += "null";
    }
  }

  void value(int number) { append(text_, "{}", number); }

  void value(bool flag) { text_ += flag ? "true" : "false"; }

  void value(const std::optional<double>& number) {
    if (number) {
      value(*number);
    } else {
      text_ += "null";
    }
  }

  void value(std::string_view string) {
    text_ += '"';
    for (const char c : string) {
      if (c == '"' || c == '\\') {
        text_ += '\\';
        text_ += c;
      } else if (static_cast<unsigned char>(c) < 0x20) {
        append(text_, "\\u{:04x}", static_cast<unsigned>(c));
      } else {
        text_ += c;
      }
    }
    text_ += '"';
  }

  void value(const std::string& string) { value(std::string_view(string)); }

  void value(glm::vec2 point) {
    text_ += '[';
    value(static_cast<double>(point.x));
    text_ += ',';
    value(static_cast<double>(point.y));
    text_ += ']';
  }

  void value(const ZoomSegment::Waypoint& waypoint) {
    object([&] {
      member("t", waypoint.t);
      member("focus", waypoint.focus);
    });
  }

  void value(const ZoomSegment& segment) {
    object([&] {
      member("id", segment.id);
      member("start", segment.start);
      member("end", segment.end);
      member("enabled", segment.enabled);
      if (segment.sourceClickTime) {
        member("sourceClickTime", *segment.sourceClickTime);
      }
      member("level", segment.level);
      member("focus", segment.focus);
      member("followCursor", segment.followCursor);
      member("deadzone", segment.deadzone);
      member("followSpeed", segment.followSpeed);
      member("isManual", segment.isManual);
      member("endsWithExplicitReset", segment.endsWithExplicitReset);
      member("easeIn", segment.easeIn);
      member("easeOut", segment.easeOut);
      member("holdMin", segment.holdMin);
      member("motionBlur", segment.motionBlur);
      arrayMember("waypoints", segment.waypoints);
      member("panDuration", segment.panDuration);
    });
  }

  void value(const CameraPose& pose) {
    object([&] {
      member("target", pose.target);
      member("yaw", pose.yaw);
      member("pitch", pose.pitch);
      member("roll", pose.roll);
      member("fov", pose.fov);
      member("framing", pose.framing);
      member("motionBlur", pose.motionBlur);
    });
  }

  void value(const Criterion& criterion) {
    object([&] {
      member("number", criterion.number);
      member("name", criterion.name);
      member("value", criterion.value);
      member("limit", criterion.limit);
      member("at", criterion.at);
      member("pass", criterion.pass);
    });
  }

  std::string text_;
};

constexpr std::size_t usualSampleLength = 170;
constexpr std::size_t usualRestLength = 32768;

}  // namespace

std::string reportJson(const DumpCtx& context, const MotionCriteria& measured) {
  JsonWriter json(usualRestLength + context.track.samples.size() * usualSampleLength);
  json.object([&] {
    json.key("segments");
    json.object([&] {
      for (const LevelResult& level : context.levels) {
        json.arrayMember(rawValue(level.sensitivity), level.segments);
      }
    });
    json.key("coverage");
    json.object([&] {
      for (const LevelResult& level : context.levels) {
        json.member(rawValue(level.sensitivity), level.coverage);
      }
    });
    json.key("track");
    json.object([&] {
      json.member("t0", context.track.t0);
      json.member("step", context.track.step);
      json.arrayMember("samples", context.track.samples);
    });
    json.arrayMember("criteria", measured.criteria);
    json.arrayMember("failures", failures(context, measured));
  });
  return std::move(json).take() + "\n";
}

}  // namespace vesk::motion
