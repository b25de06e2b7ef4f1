#include "media/EncoderSelection.h"

#include <fmt/format.h>

#include <cassert>
#include <iterator>

#include "media/EncoderMemory.h"
#include "media/PictureEncoder.h"
#include "package/Log.h"

namespace vesk::media {
namespace {

std::string describe(const EncoderSelection::Trial& trial, int fps) {
  if (!trial.pace.works) {
    return fmt::format("{} does not work here", trial.encoder.name);
  }
  const double milliseconds = 1000 * trial.pace.seconds / trial.pace.pictures;
  const char* verdict = judge(trial.pace, fps) == PaceVerdict::holds ? "holds" : "is too slow for";
  return fmt::format("{} took {:.1f} ms for each of {} pictures and {} {} fps", trial.encoder.name,
                     milliseconds, trial.pace.pictures, verdict, fps);
}

}  // namespace

EncoderSelection selectEncoder(std::span<const CaptureEncoder> candidates, int fps,
                               const std::function<EncoderPace(const CaptureEncoder&)>& measure) {
  assert(!candidates.empty());
  EncoderSelection selection{.encoder = candidates.back(), .trials = {}};
  for (const CaptureEncoder& candidate : candidates.first(candidates.size() - 1)) {
    const EncoderPace pace = measure(candidate);
    selection.trials.push_back({candidate, pace});
    if (judge(pace, fps) == PaceVerdict::holds) {
      selection.encoder = candidate;
      break;
    }
  }
  return selection;
}

std::string describe(const EncoderSelection& selection, int fps) {
  std::string text;
  for (const EncoderSelection::Trial& trial : selection.trials) {
    fmt::format_to(std::back_inserter(text), "{}{}", text.empty() ? "" : "; ",
                   describe(trial, fps));
  }
  return text;
}

CaptureEncoder encoderOfThisMachine(const PictureTrackSettings& settings,
                                    const std::filesystem::path& memory) {
  spdlog::logger& log = package::log(package::LogCategory::capture);
  const std::string situation = encodingSituation(settings);
  if (const auto known = captureEncoderNamed(rememberedEncoder(memory, situation));
      known && PictureEncoder::open(*known, settings)) {
    log.info("encoder {} for {}, as measured before", known->name, situation);
    return *known;
  }
  const auto selection =
      selectEncoder(captureEncoders(), settings.fps,
                    [&](const CaptureEncoder& encoder) { return measurePace(encoder, settings); });
  log.info("encoder {} for {}: {}", selection.encoder.name, situation,
           describe(selection, settings.fps));
  if (const auto stored = rememberEncoder(memory, situation, selection.encoder.name); !stored) {
    log.warn("encoder not remembered: {}", stored.error().message);
  }
  return selection.encoder;
}

}  // namespace vesk::media
