#pragma once

#include "package/RecordingLibrary.h"

namespace vesk::app {

/// The library of this process's user. Made at the first call, with the root that the user defaults
/// name; the folder is not looked into before a scan is asked for. One thread, the user
/// interface's.
package::RecordingLibrary& sharedLibrary();

/// Sets the panel in which the shared library lets the user choose a folder. Without one, nothing
/// can be chosen.
void setFolderPanel(package::RecordingLibrary::FolderPanel panel);

}  // namespace vesk::app
