#pragma once

namespace vesk::app {

/// Says what the windows are drawn with. The preview is drawn by the compositor of the export, in
/// OpenGL 4.3, in the window's own context. Before the application object exists.
void chooseGraphics();

/// Tells the desktop who we are, and chooses the typeface. The application object exists.
void describeApplication();

}  // namespace vesk::app
