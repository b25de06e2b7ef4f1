#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "package/EditDocument.h"
#include "package/EditDocumentCoding.h"
#include "package/RandomEditDocument.h"

namespace vesk::package {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

EditDocument decoded(std::string_view json) {
  const auto document = decodeEditDocument(json);
  if (document) return *document;
  ADD_FAILURE() << json << ": " << document.error().message;
  return {};
}

std::string refusal(std::string_view json) {
  const auto document = decodeEditDocument(json);
  return document ? "" : document.error().message;
}

std::vector<std::string> idsOf(const EditDocument& document) {
  std::vector<std::string> ids;
  for (const auto& segment : document.segments.value()) ids.push_back(segment.id);
  return ids;
}

std::string encoded(const EditDocument& document) {
  return encodeEditDocument(document).value();
}

TEST(EditDocument, anEmptyObjectIsTheDocumentOfAllDefaults) {
  const auto document = decoded("{}");
  EXPECT_EQ(document, EditDocument());
  EXPECT_FALSE(document.segments);
  EXPECT_EQ(document.cursor.style, "箭头");
  EXPECT_EQ(document.pip.size, 0.22);
  EXPECT_EQ(document.frame.padding, 0.07);
}

TEST(EditDocument, hasTheseDefaults) {
  EXPECT_EQ(nlohmann::json::parse(encoded({})), nlohmann::json::parse(R"({
    "version": 1, "sensitivity": "标准", "useAutoDetection": true, "followSpeed": 0.3,
    "transitionEase": "平稳", "motionBlurEnabled": true, "motionBlurStrength": 1.0,
    "systemVolume": 1.0, "micVolume": 1.0,
    "ripple": {"style": 0.0, "size": 0.022, "duration": 0.25, "color": [1.0, 0.843, 0.0, 1.0],
               "opacity": 0.85, "stroke": true, "enabled": true},
    "cursor": {"visible": true, "style": "箭头", "scale": 1.4, "smoothing": 0.7,
               "smoothingWindow": 0.12, "clickShrink": 0.12},
    "camera3D": {"enabled": false, "fov": 28.0, "yaw": 12.0, "pitch": 6.0, "roll": 0.0},
    "pip": {"enabled": true, "shape": "圆形", "size": 0.22, "centerX": 0.845, "centerY": 0.8,
            "cornerRadius": 0.18, "border": 0.018, "shadow": 0.0, "mirrored": true},
    "frame": {"enabled": false, "background": "渐变", "padding": 0.07, "cornerRadius": 0.02,
              "shadow": 0.5, "colorA": [0.075, 0.082, 0.11, 1.0],
              "colorB": [0.15, 0.125, 0.195, 1.0]}})"));
}

TEST(EditDocument, aPartialRecordKeepsWhatItHasAndFillsInTheRest) {
  const auto document =
      decoded(R"({"cursor":{"scale":2.0},"pip":{"size":0.4},"ripple":{"opacity":0.5}})");
  EditDocument expected;
  expected.cursor.scale = 2;
  expected.pip.size = 0.4;
  expected.ripple.opacity = 0.5;
  EXPECT_EQ(document, expected);
}

TEST(EditDocument, aSegmentOfItsRequiredKeysHasDefaultsForTheRest) {
  const auto document = decoded(R"({"segments":[{"id":"a","start":1,"end":3}]})");
  EditDocument::Segment expected;
  expected.id = "a";
  expected.start = 1;
  expected.end = 3;
  EXPECT_THAT(document.segments.value(), ElementsAre(expected));
  EXPECT_EQ(expected.level, 2.0);
  EXPECT_EQ(expected.deadzone, 0.67);
  EXPECT_EQ(expected.panDuration, 0.55);
}

TEST(EditDocument, aBadSegmentLosesOnlyItself) {
  EXPECT_THAT(idsOf(decoded(R"({"segments":[{"id":"a","start":1,"end":3},{"id":"b"},
                               {"id":"c","start":5,"end":7}]})")),
              ElementsAre("a", "c"));
  EXPECT_THAT(idsOf(decoded(R"({"segments":[null,1,"x",[],{},{"id":"no end","start":1},
      {"id":"no start","end":1},{"id":"null start","start":null,"end":1},
      {"id":"start","start":"1","end":1},{"id":"enabled","start":1,"end":1,"enabled":1},
      {"id":"level","start":1,"end":1,"level":true},{"id":7,"start":1,"end":1},
      {"id":"waypoints","start":1,"end":1,"waypoints":{}},{"id":"good","start":1,"end":2}]})")),
              ElementsAre("good"));
}

TEST(EditDocument, aBadWaypointLosesOnlyItself) {
  const auto document = decoded(R"({"segments":[{"start":1,"end":3,"waypoints":
      [{"t":1,"x":2,"y":3},{"t":1,"x":2},{"t":"1","x":2,"y":3},null,[1,2,3],
       {"t":4,"x":5,"y":6,"z":7}]}]})");
  using Waypoint = EditDocument::Segment::Waypoint;
  EXPECT_THAT(document.segments.value().at(0).waypoints,
              ElementsAre(Waypoint{1, 2, 3}, Waypoint{4, 5, 6}));
}

TEST(EditDocument, unknownKeysAreIgnoredAtEveryLevel) {
  const auto document = decoded(
      R"({"cursor":{"style":"光点","glow":9},"futureKey":true,
          "segments":[{"start":1,"end":2,"new":[{"a":1}]}]})");
  EXPECT_EQ(document.cursor.style, "光点");
  EXPECT_EQ(document.segments.value().size(), 1U);
}

TEST(EditDocument, anEmptyListOfSegmentsIsNotAnAbsentOne) {
  EXPECT_EQ(decoded(R"({"segments":[]})").segments, std::vector<EditDocument::Segment>{});
  EXPECT_EQ(decoded(R"({"segments":null})").segments, std::nullopt);
  EXPECT_THAT(idsOf(decoded(R"({"segments":[{}]})")), ElementsAre());
}

TEST(EditDocument, nullCountsAsAnAbsentKeyAtEveryLevel) {
  EXPECT_EQ(decoded(R"({"version":null,"segments":null,"sensitivity":null,"ripple":null,
                        "cursor":{"style":null},"pip":{"enabled":null},
                        "frame":{"colorA":null},"micVolume":null})"),
            EditDocument());
  const auto segment = decoded(R"({"segments":[{"id":null,"start":1.5,"end":2,"level":null,
                                  "sourceClickTime":null,"waypoints":null}]})")
                           .segments.value()
                           .at(0);
  EditDocument::Segment expected;
  expected.id = "seg_1500";
  expected.start = 1.5;
  expected.end = 2;
  EXPECT_EQ(segment, expected);
}

TEST(EditDocument, aSegmentWithoutANameIsCalledAfterItsStart) {
  EXPECT_THAT(idsOf(decoded(R"({"segments":[{"start":1.5,"end":3},{"start":1.9999,"end":3},
      {"start":-0.0001,"end":3},{"start":-2.5,"end":3},{"start":1e18,"end":0},
      {"start":1e308,"end":0}]})")),
              ElementsAre("seg_1500", "seg_1999", "seg_0", "seg_-2500",
                          "seg_1000000000000000000000", "seg_inf"));
}

TEST(EditDocument, aWrongTypeOutsideOfAListFailsTheWholeDecode) {
  for (const char* json :
       {R"({"segments":{}})", R"({"segments":"none"})", R"({"version":"1"})", R"({"version":1.5})",
        R"({"version":18446744073709551615})", R"({"sensitivity":1})",
        R"({"useAutoDetection":"yes"})", R"({"followSpeed":true})", R"({"ripple":[]})",
        R"({"ripple":{"color":"gold"}})", R"({"ripple":{"color":[1,null,0,1]}})",
        R"({"cursor":{"scale":"2"}})", R"({"camera3D":{"enabled":0}})",
        R"({"pip":{"mirrored":{}}})", R"({"frame":{"colorB":[1,"1",0,1]}})", "[]", "1", "null",
        "\"text\""}) {
    EXPECT_THAT(refusal(json), HasSubstr("编辑记录“edit.json”已损坏：")) << json;
  }
}

TEST(EditDocument, aFailureNamesTheKeyAndWhereItStands) {
  EXPECT_EQ(refusal(R"({"cursor":{"scale":"2"}})"),
            "编辑记录“edit.json”已损坏：“cursor”中的字段“scale”应为数字。");
  EXPECT_EQ(refusal(R"({"segments":1})"), "编辑记录“edit.json”已损坏：字段“segments”应为数组。");
  EXPECT_EQ(refusal(R"({"frame":{"colorA":1}})"),
            "编辑记录“edit.json”已损坏：“frame”中的字段“colorA”应为数字的数组。");
}

TEST(EditDocument, aTextThatIsNoJsonIsRefused) {
  for (const std::string_view text :
       {std::string_view("{ 这不是 JSON"), std::string_view(""), std::string_view("{}{}"),
        std::string_view("{\"followSpeed\":NaN}"), std::string_view("{\"followSpeed\":Infinity}"),
        std::string_view("{\"followSpeed\":1e400}"), std::string_view("{\"sensitivity\":\"\xFF\"}"),
        std::string_view("{\"sensitivity\":\"\\ud800\"}"), std::string_view("{}\0", 3),
        std::string_view("{}\0{", 4), std::string_view("{'version':1}"),
        std::string_view("{\"version\":1,}"), std::string_view("\"\\")}) {
    EXPECT_EQ(refusal(text), "编辑记录“edit.json”已损坏：内容不是有效的 JSON。") << text;
  }
}

TEST(EditDocument, aByteOrderMarkIsNoHindrance) {
  EXPECT_EQ(decoded("\xEF\xBB\xBF{\"followSpeed\":0.5}").followSpeed, 0.5);
}

TEST(EditDocument, theLastOfTwoEqualKeysCounts) {
  EXPECT_EQ(decoded(R"({"followSpeed":0.5,"followSpeed":0.6})").followSpeed, 0.6);
}

TEST(EditDocument, deepNestingIsRefusedWithoutRecursion) {
  const std::string open(500, '[');
  const std::string close(500, ']');
  EXPECT_EQ(decoded("{\"future\":" + open + close + "}"), EditDocument());
  for (const char* bracket : {"[", "{\"a\":", "{\"segments\":["}) {
    std::string text;
    while (text.size() < 4'000'000) text += bracket;
    EXPECT_NE(refusal(text), "");
  }
}

TEST(EditDocument, bracketsInsideOfStringsAreNoNesting) {
  const std::string brackets(1000, '[');
  const auto document = decoded(R"({"sensitivity":"\")" + brackets + R"(","followSpeed":0.5})");
  EXPECT_EQ(document.sensitivity, '"' + brackets);
  EXPECT_EQ(document.followSpeed, 0.5);
}

TEST(EditDocument, isWrittenPrettyWithSortedKeysAndEveryOneOfThem) {
  EditDocument document;
  document.segments.emplace();
  const std::string text = encoded(document);
  EXPECT_TRUE(text.starts_with("{\n  \"camera3D\": {\n    \"enabled\": false,\n    \"fov\": 28.0"));
  EXPECT_THAT(text, HasSubstr("\n  \"segments\": [],\n  \"sensitivity\": \"标准\",\n"));
  EXPECT_EQ(nlohmann::json::parse(text).size(), 15U);
}

TEST(EditDocument, whatHasNoValueIsLeftOut) {
  EditDocument document;
  EXPECT_FALSE(nlohmann::json::parse(encoded(document)).contains("segments"));
  document.segments = {EditDocument::Segment{}};
  auto segment = nlohmann::json::parse(encoded(document)).at("segments").at(0);
  EXPECT_EQ(segment.size(), 18U);
  EXPECT_FALSE(segment.contains("sourceClickTime"));
  document.segments->front().sourceClickTime = 0.0;
  segment = nlohmann::json::parse(encoded(document)).at("segments").at(0);
  EXPECT_EQ(segment.size(), 19U);
}

TEST(EditDocument, whatJsonCannotHoldIsAnErrorThatNamesIt) {
  EditDocument document;
  document.pip.border = notANumber;
  EXPECT_EQ(encodeEditDocument(document).error().message,
            "编辑记录“edit.json”无法保存：字段“border”不是有限的数字。");
  document = {};
  document.frame.colorA.back() = -infinity;
  EXPECT_THAT(encodeEditDocument(document).error().message, HasSubstr("“colorA”"));
  document = {};
  document.segments = {EditDocument::Segment{}};
  document.segments->front().sourceClickTime = infinity;
  EXPECT_THAT(encodeEditDocument(document).error().message, HasSubstr("“sourceClickTime”"));
  document.segments->front().sourceClickTime.reset();
  document.segments->front().waypoints = {{.t = 0, .x = notANumber, .y = 0}};
  EXPECT_THAT(encodeEditDocument(document).error().message, HasSubstr("“x”"));
  document = {};
  document.sensitivity = "\xFF";
  EXPECT_THAT(encodeEditDocument(document).error().message, HasSubstr("不是 UTF-8"));
}

TEST(EditDocument, everyDocumentSurvivesItsRoundTrip) {
  RandomEditDocument random(1);
  for (int i = 0; i < 300; ++i) {
    const auto document = random.document();
    const std::string text = encoded(document);
    EXPECT_EQ(decoded(text), document) << text;
  }
}

TEST(EditDocument, noCutAndNoChangedByteOfADocumentCrashes) {
  RandomEditDocument random(2);
  for (int i = 0; i < 300; ++i) {
    std::string text = encoded(random.document());
    text.resize(text.size() - random.below(2) * random.below(text.size()));
    if (!text.empty()) text[random.below(text.size())] = static_cast<char>(random.below(256));
    const auto document = decodeEditDocument(text);
    if (document) {
      EXPECT_EQ(decoded(encoded(*document)), *document);
    } else {
      EXPECT_THAT(document.error().message, HasSubstr("edit.json"));
    }
  }
}

TEST(EditDocumentStyles, settingsSurviveTheirStoredForm) {
  const RippleSettings ripple{.style = RippleStyle::dot,
                              .size = 0.1,
                              .duration = 0.2,
                              .color = {0.1F, 0.2F, 0.3F, 0.4F},
                              .opacity = 0.5,
                              .stroke = false,
                              .enabled = false};
  RippleSettings newRipple;
  EditDocument::RippleDoc(ripple).applyTo(newRipple);
  EXPECT_EQ(newRipple, ripple);

  const CursorSettings cursor{.visible = false,
                              .style = CursorStyle::crosshair,
                              .scale = 2,
                              .smoothing = 0.1,
                              .smoothingWindow = 0.2,
                              .clickShrink = 0.3};
  CursorSettings newCursor;
  EditDocument::CursorDoc(cursor).applyTo(newCursor);
  EXPECT_EQ(newCursor, cursor);

  const Camera3DSettings camera{.enabled = true, .fov = 1, .yaw = 2, .pitch = 3, .roll = 4};
  Camera3DSettings newCamera;
  EditDocument::Camera3DDoc(camera).applyTo(newCamera);
  EXPECT_EQ(newCamera, camera);

  const PiPSettings pip{.enabled = false,
                        .shape = PiPSettings::Shape::rounded,
                        .size = 0.1,
                        .center = {0.2F, 0.3F},
                        .cornerRadius = 0.4,
                        .border = 0.5,
                        .shadow = 0.6,
                        .mirrored = false};
  PiPSettings newPip;
  EditDocument::PiPDoc(pip).applyTo(newPip);
  EXPECT_EQ(newPip, pip);

  const FrameStyle frame{.enabled = true,
                         .background = FrameStyle::Background::solid,
                         .padding = 0.1,
                         .cornerRadius = 0.2,
                         .shadow = 0.3,
                         .colorA = {0.1F, 0.2F, 0.3F, 0.4F},
                         .colorB = {0.5F, 0.6F, 0.7F, 0.8F}};
  FrameStyle newFrame;
  EditDocument::FrameDoc(frame).applyTo(newFrame);
  EXPECT_EQ(newFrame, frame);
}

TEST(EditDocumentStyles, everyStyleSurvivesItsStoredForm) {
  for (const auto style : allRippleStyles) {
    RippleSettings settings;
    EditDocument::RippleDoc(RippleSettings{.style = style}).applyTo(settings);
    EXPECT_EQ(settings.style, style);
  }
  for (const auto style : allCursorStyles) {
    CursorSettings settings;
    EditDocument::CursorDoc(CursorSettings{.style = style}).applyTo(settings);
    EXPECT_EQ(settings.style, style);
  }
  for (const auto background : FrameStyle::allBackgrounds) {
    FrameStyle settings;
    EditDocument::FrameDoc(FrameStyle{.background = background}).applyTo(settings);
    EXPECT_EQ(settings.background, background);
  }
  for (const auto shape : PiPSettings::allShapes) {
    PiPSettings settings;
    EditDocument::PiPDoc(PiPSettings{.shape = shape}).applyTo(settings);
    EXPECT_EQ(settings.shape, shape);
  }
}

TEST(EditDocumentStyles, theDefaultsOfTheDocumentAreThoseOfTheSettings) {
  RippleSettings ripple{.style = RippleStyle::dot, .color = {}};
  EditDocument::RippleDoc().applyTo(ripple);
  EXPECT_EQ(ripple, RippleSettings());
  CursorSettings cursor{.style = CursorStyle::dot};
  EditDocument::CursorDoc().applyTo(cursor);
  EXPECT_EQ(cursor, CursorSettings());
  Camera3DSettings camera{.fov = 1};
  EditDocument::Camera3DDoc().applyTo(camera);
  EXPECT_EQ(camera, Camera3DSettings());
  PiPSettings pip{.center = {}};
  EditDocument::PiPDoc().applyTo(pip);
  EXPECT_EQ(pip, PiPSettings());
  FrameStyle frame{.colorA = {}, .colorB = {}};
  EditDocument::FrameDoc().applyTo(frame);
  EXPECT_EQ(frame, FrameStyle());
}

TEST(EditDocumentStyles, aStyleWithoutACaseFallsBack) {
  EditDocument document;
  for (const double style : {1.5, -1.0, 3.0, 1e300, notANumber}) {
    document.ripple.style = style;
    RippleSettings ripple{.style = RippleStyle::dot};
    document.ripple.applyTo(ripple);
    EXPECT_EQ(ripple.style, RippleStyle::ripple);
  }
  document.ripple.style = 1 + 1e-12;  // exactly 1 in single precision
  RippleSettings ripple;
  document.ripple.applyTo(ripple);
  EXPECT_EQ(ripple.style, RippleStyle::ring);

  document.cursor.style = "星星";
  CursorSettings cursor{.style = CursorStyle::dot};
  document.cursor.applyTo(cursor);
  EXPECT_EQ(cursor.style, CursorStyle::arrow);
  document.pip.shape = "方形";
  PiPSettings pip{.shape = PiPSettings::Shape::rounded};
  document.pip.applyTo(pip);
  EXPECT_EQ(pip.shape, PiPSettings::Shape::circle);
  document.frame.background = "";
  FrameStyle frame{.background = FrameStyle::Background::none};
  document.frame.applyTo(frame);
  EXPECT_EQ(frame.background, FrameStyle::Background::gradient);
}

TEST(EditDocumentStyles, aListOfAnotherLengthLeavesTheColor) {
  for (const std::size_t length : {0U, 3U, 5U}) {
    EditDocument document;
    document.ripple.color.resize(length);
    document.frame.colorA.resize(length);
    RippleSettings ripple{.color = {0.1F, 0.2F, 0.3F, 0.4F}};
    document.ripple.applyTo(ripple);
    EXPECT_EQ(ripple.color, glm::vec4(0.1F, 0.2F, 0.3F, 0.4F));
    FrameStyle frame{.colorA = {0.4F, 0.3F, 0.2F, 0.1F}, .colorB = {}};
    document.frame.applyTo(frame);
    EXPECT_EQ(frame.colorA, glm::vec4(0.4F, 0.3F, 0.2F, 0.1F));
    EXPECT_EQ(frame.colorB, FrameStyle().colorB);
  }
}

TEST(EditDocumentStyles, aPositionBeyondSinglePrecisionCanBeSavedAgain) {
  EditDocument document = decoded(R"({"pip":{"centerX":1e300,"centerY":-1e300}})");
  PiPSettings pip;
  document.pip.applyTo(pip);
  document.pip = EditDocument::PiPDoc(pip);
  EXPECT_TRUE(encodeEditDocument(document));
}

}  // namespace
}  // namespace vesk::package
