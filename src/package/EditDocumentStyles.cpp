#include <vector>

#include "package/EditDocument.h"
#include "package/SinglePrecision.h"

namespace vesk::package {

namespace {

std::vector<double> components(glm::vec4 color) {
  return {color.r, color.g, color.b, color.a};
}

/// A list of another length is no colour and changes none.
void applyColor(const std::vector<double>& components, glm::vec4& color) {
  if (components.size() != 4) return;
  color = {singlePrecision(components[0]), singlePrecision(components[1]),
           singlePrecision(components[2]), singlePrecision(components[3])};
}

}  // namespace

EditDocument::RippleDoc::RippleDoc(const RippleSettings& settings)
    : style(rawValue(settings.style)),
      size(settings.size),
      duration(settings.duration),
      color(components(settings.color)),
      opacity(settings.opacity),
      stroke(settings.stroke),
      enabled(settings.enabled) {}

void EditDocument::RippleDoc::applyTo(RippleSettings& settings) const {
  settings.style = rippleStyle(singlePrecision(style)).value_or(RippleStyle::ripple);
  settings.size = size;
  settings.duration = duration;
  applyColor(color, settings.color);
  settings.opacity = opacity;
  settings.stroke = stroke;
  settings.enabled = enabled;
}

EditDocument::CursorDoc::CursorDoc(const CursorSettings& settings)
    : visible(settings.visible),
      style(rawValue(settings.style)),
      scale(settings.scale),
      smoothing(settings.smoothing),
      smoothingWindow(settings.smoothingWindow),
      clickShrink(settings.clickShrink) {}

void EditDocument::CursorDoc::applyTo(CursorSettings& settings) const {
  settings.visible = visible;
  settings.style = cursorStyle(style).value_or(CursorStyle::arrow);
  settings.scale = scale;
  settings.smoothing = smoothing;
  settings.smoothingWindow = smoothingWindow;
  settings.clickShrink = clickShrink;
}

EditDocument::Camera3DDoc::Camera3DDoc(const Camera3DSettings& settings)
    : enabled(settings.enabled),
      fov(settings.fov),
      yaw(settings.yaw),
      pitch(settings.pitch),
      roll(settings.roll) {}

void EditDocument::Camera3DDoc::applyTo(Camera3DSettings& settings) const {
  settings = {.enabled = enabled, .fov = fov, .yaw = yaw, .pitch = pitch, .roll = roll};
}

EditDocument::PiPDoc::PiPDoc(const PiPSettings& settings)
    : enabled(settings.enabled),
      shape(rawValue(settings.shape)),
      size(settings.size),
      centerX(settings.center.x),
      centerY(settings.center.y),
      cornerRadius(settings.cornerRadius),
      border(settings.border),
      shadow(settings.shadow),
      mirrored(settings.mirrored) {}

void EditDocument::PiPDoc::applyTo(PiPSettings& settings) const {
  settings.enabled = enabled;
  settings.shape = pipShape(shape).value_or(PiPSettings::Shape::circle);
  settings.size = size;
  settings.center = {singlePrecision(centerX), singlePrecision(centerY)};
  settings.cornerRadius = cornerRadius;
  settings.border = border;
  settings.shadow = shadow;
  settings.mirrored = mirrored;
}

EditDocument::FrameDoc::FrameDoc(const FrameStyle& settings)
    : enabled(settings.enabled),
      background(rawValue(settings.background)),
      padding(settings.padding),
      cornerRadius(settings.cornerRadius),
      shadow(settings.shadow),
      colorA(components(settings.colorA)),
      colorB(components(settings.colorB)) {}

void EditDocument::FrameDoc::applyTo(FrameStyle& settings) const {
  settings.enabled = enabled;
  settings.background = frameBackground(background).value_or(FrameStyle::Background::gradient);
  settings.padding = padding;
  settings.cornerRadius = cornerRadius;
  settings.shadow = shadow;
  applyColor(colorA, settings.colorA);
  applyColor(colorB, settings.colorB);
}

}  // namespace vesk::package
