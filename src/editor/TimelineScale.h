#pragma once

namespace vesk::editor {

// The scale of the timeline, in points a second: a time t lies at x = t × pxPerSec.

/// No recording is longer. Up to here its lanes have a width to calculate with, each tick of the
/// ruler has a next one, and a text can count whole seconds.
inline constexpr double mostSeconds = 1e9;
inline constexpr double leastPxPerSec = 4;
inline constexpr double mostPxPerSec = 200;
inline constexpr double zoomStep = 1.4;

double zoomedIn(double pxPerSec);
double zoomedOut(double pxPerSec);

/// The scale at which a recording of `duration` seconds fits a window of usual width, or `pxPerSec`
/// as it is when the duration is not above 0. A short one may lie beyond `mostPxPerSec`.
double fittedScale(double duration, double pxPerSec);

/// Seconds between the ticks of the ruler, so that they stand at least 90 points apart.
double tickInterval(double pxPerSec);

/// Whether the ticks are to tell tenths of a second.
bool hasTenths(double pxPerSec);

/// How near an edge must come to something to snap to it, in seconds.
double snapDistance(double pxPerSec);

/// The shortest that a trim leaves of a segment, in seconds: what is still seen and still an
/// effect.
double leastLength(double pxPerSec);

}  // namespace vesk::editor
