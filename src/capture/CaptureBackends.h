#pragma once

#include <memory>
#include <string>

#include "capture/CameraSource.h"
#include "capture/CaptureCapabilities.h"
#include "capture/DisplayGeometry.h"
#include "capture/FrontApplication.h"
#include "capture/HotKeys.h"
#include "capture/InputInjector.h"
#include "capture/InputSource.h"
#include "capture/KeyNames.h"
#include "capture/ScreenSource.h"
#include "capture/SoundSource.h"

namespace vesk::capture {

/// One backend for each resource of the machine; none of them null. What the machine does not have
/// is a backend that says so when it is used.
struct CaptureBackends {
  std::string name;  ///< of the desktop's backend, for the log
  CaptureCapabilities capabilities;
  std::unique_ptr<DisplayGeometry> geometry;
  std::unique_ptr<ScreenSource> screen;
  std::unique_ptr<InputSource> input;
  std::unique_ptr<HotKeys> hotKeys;
  std::unique_ptr<FrontApplication> frontApplication;
  std::unique_ptr<SoundSource> systemSound;
  std::unique_ptr<SoundSource> microphone;
  std::unique_ptr<CameraSource> camera;
  std::unique_ptr<InputInjector> injector;
  KeyNames::LayoutLookup keyboardLayout;
};

}  // namespace vesk::capture
