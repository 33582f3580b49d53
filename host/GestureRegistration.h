// SPDX-License-Identifier: MIT
#ifndef TAMBER_GESTUREREGISTRATION_H
#define TAMBER_GESTUREREGISTRATION_H

#include "TamberGlobal.h"

// Registers the host's four gesture recognizers with Qt and keeps each type in
// its recognizer's _gestureType, so that reading views grab real gesture types.
// Call once a QApplication exists and before the first view is made; later
// calls do nothing.
TAMBER_EXPORT void registerGestureRecognizers();

// What the recognizers take for a tap, a swipe, a drag and a pinch. Distances
// are in screen pixels, times in the milliseconds of the events' timestamps.
namespace GestureThresholds {

// A press that moves further than this is no tap; a drag starts beyond it.
constexpr double TapMaximumMovement = 16;
// A swipe covers at least this distance along an axis...
constexpr double SwipeMinimumDistance = 60;
// ...between a press and a release at most this far apart in time.
constexpr unsigned long SwipeMaximumDuration = 400;
// One step of the wheel with Ctrl held zooms in by this factor, or out by its
// inverse.
constexpr double WheelStepScale = 1.1;
// Angle of one step of a mouse wheel, in eighths of a degree.
constexpr int WheelStepAngle = 120;

} // namespace GestureThresholds

#endif
