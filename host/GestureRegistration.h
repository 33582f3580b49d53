#ifndef TAMBER_GESTUREREGISTRATION_H
#define TAMBER_GESTUREREGISTRATION_H

#include "TamberGlobal.h"

// Registers the host's four gesture recognizers with Qt and keeps each type in
// its recognizer's _gestureType, so that reading views grab real gesture types.
// Call once a QApplication exists and before the first view is made; later
// calls do nothing.
TAMBER_EXPORT void registerGestureRecognizers();

#endif
