#include "capture/pipewire/VideoFormats.h"

#include <spa/param/format-utils.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>

#include <algorithm>
#include <array>
#include <span>

namespace vesk::capture::pipewire {
namespace {

using camera::CameraFormat;
using camera::PixelLayout;

struct KnownFormat {
  std::uint32_t id;
  PixelLayout layout;
};

constexpr std::array knownFormats{
    KnownFormat{SPA_VIDEO_FORMAT_BGRx, PixelLayout::bgrx},
    KnownFormat{SPA_VIDEO_FORMAT_BGRA, PixelLayout::bgrx},
    KnownFormat{SPA_VIDEO_FORMAT_RGBx, PixelLayout::rgbx},
    KnownFormat{SPA_VIDEO_FORMAT_RGBA, PixelLayout::rgbx},
    KnownFormat{SPA_VIDEO_FORMAT_NV12, PixelLayout::nv12},
    KnownFormat{SPA_VIDEO_FORMAT_I420, PixelLayout::i420},
    KnownFormat{SPA_VIDEO_FORMAT_YUY2, PixelLayout::yuy2},
};

constexpr spa_fraction anyRate{.num = 0, .denom = 1};
constexpr spa_fraction highestRate{.num = 1000, .denom = 1};

/// What a description says of one property: a value, several, or a range of them.
template <typename Value>
struct Choice {
  std::uint32_t kind = SPA_CHOICE_None;
  std::vector<Value> values;  ///< the default first, where there is a choice

  /// Those that are listed one by one.
  std::span<const Value> listed() const {
    const std::span<const Value> all{values};
    return kind == SPA_CHOICE_Enum && all.size() > 1
               ? all.subspan(1)
               : all.first(std::min<std::size_t>(all.size(), 1));
  }
  bool isRange() const {
    return (kind == SPA_CHOICE_Range || kind == SPA_CHOICE_Step) && values.size() >= 3;
  }
};

template <typename Value>
Choice<Value> choiceOf(const spa_pod& description, std::uint32_t key) {
  const spa_pod_prop* property = spa_pod_find_prop(&description, nullptr, key);
  if (property == nullptr) return {};
  std::uint32_t count = 0;
  Choice<Value> choice;
  const spa_pod* first = spa_pod_get_values(&property->value, &count, &choice.kind);
  if (first->size != sizeof(Value)) return {};
  const auto* values = static_cast<const Value*>(SPA_POD_BODY_CONST(first));
  choice.values.assign(values, values + count);
  return choice;
}

std::vector<PixelLayout> layoutsIn(const spa_pod& description) {
  std::uint32_t type = 0;
  std::uint32_t subtype = 0;
  if (spa_format_parse(&description, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video) {
    return {};
  }
  if (subtype == SPA_MEDIA_SUBTYPE_mjpg) return {PixelLayout::mjpeg};
  if (subtype != SPA_MEDIA_SUBTYPE_raw) return {};
  std::vector<PixelLayout> layouts;
  const auto ids = choiceOf<std::uint32_t>(description, SPA_FORMAT_VIDEO_format);
  for (const std::uint32_t id : ids.listed()) {
    const auto* const known = std::ranges::find(knownFormats, id, &KnownFormat::id);
    if (known != knownFormats.end()) layouts.push_back(known->layout);
  }
  return layouts;
}

PixelSize pixelSize(const spa_rectangle& size) {
  return {static_cast<int>(size.width), static_cast<int>(size.height)};
}

std::vector<PixelSize> sizesIn(const spa_pod& description, PixelSize wanted) {
  const auto sizes = choiceOf<spa_rectangle>(description, SPA_FORMAT_VIDEO_size);
  if (sizes.isRange()) {
    const bool hasSteps = sizes.values.size() > 3;
    const camera::SizeRange range{.least = pixelSize(sizes.values[1]),
                                  .most = pixelSize(sizes.values[2]),
                                  .step = hasSteps ? pixelSize(sizes.values[3]) : PixelSize{1, 1}};
    return {camera::closestSize(range, wanted)};
  }
  std::vector<PixelSize> found;
  for (const spa_rectangle& size : sizes.listed()) found.push_back(pixelSize(size));
  return found;
}

double highestRateIn(const spa_pod& description) {
  double highest = 0;
  const auto rates = choiceOf<spa_fraction>(description, SPA_FORMAT_VIDEO_framerate);
  for (const spa_fraction& rate : rates.values) {
    if (rate.denom != 0) highest = std::max(highest, static_cast<double>(rate.num) / rate.denom);
  }
  return highest;
}

}  // namespace

std::vector<CameraFormat> formatsOffered(const spa_pod& description, PixelSize wanted) {
  std::vector<CameraFormat> formats;
  const double rate = highestRateIn(description);
  for (const PixelLayout layout : layoutsIn(description)) {
    for (const PixelSize& size : sizesIn(description, wanted)) {
      formats.push_back({.layout = layout, .size = size, .framesPerSecond = rate});
    }
  }
  return formats;
}

const spa_pod* describe(const CameraFormat& format, spa_pod_builder& builder) {
  const bool isJpeg = format.layout == PixelLayout::mjpeg;
  const spa_rectangle size{static_cast<std::uint32_t>(format.size.width),
                           static_cast<std::uint32_t>(format.size.height)};
  const spa_fraction rate{static_cast<std::uint32_t>(camera::frameRateOf(format)), 1};
  spa_pod_frame object{};
  spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
  spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                      SPA_FORMAT_mediaSubtype,
                      SPA_POD_Id(isJpeg ? SPA_MEDIA_SUBTYPE_mjpg : SPA_MEDIA_SUBTYPE_raw),
                      SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), SPA_FORMAT_VIDEO_framerate,
                      SPA_POD_CHOICE_RANGE_Fraction(&rate, &anyRate, &highestRate), 0);
  if (!isJpeg) {
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
    spa_pod_frame choice{};
    spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
    const auto* const first = std::ranges::find(knownFormats, format.layout, &KnownFormat::layout);
    spa_pod_builder_id(&builder, first->id);
    for (const KnownFormat& known : knownFormats) {
      if (known.layout == format.layout) spa_pod_builder_id(&builder, known.id);
    }
    spa_pod_builder_pop(&builder, &choice);
  }
  return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

std::optional<CameraFormat> formatAgreed(const spa_pod& description) {
  const auto layouts = layoutsIn(description);
  const auto sizes = sizesIn(description, {});
  if (layouts.empty() || sizes.empty()) return std::nullopt;
  return CameraFormat{.layout = layouts.front(),
                      .size = sizes.front(),
                      .framesPerSecond = highestRateIn(description)};
}

}  // namespace vesk::capture::pipewire
