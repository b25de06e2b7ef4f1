#pragma once

namespace vesk::app {

/// Until the next call of one of these, what Qt has to say goes into the log.
void sendQtMessagesToLog();

/// The same; and where Qt cannot go on, the user is told that there is no screen to open a window
/// on, and the process ends with 1 instead of an abort. For the time in which Qt looks for one.
void endWithoutScreen();

}  // namespace vesk::app
