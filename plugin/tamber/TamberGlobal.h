// SPDX-License-Identifier: MIT
#ifndef TAMBER_TAMBERGLOBAL_H
#define TAMBER_TAMBERGLOBAL_H

#include "QtCompat.h"

#include <QtGlobal>

// Host classes are exported from libtamber. The plug-in only refers to them,
// so for it the macro is empty: whatever of them it instantiates stays hidden.
#if defined(TAMBER_BUILDING_LIBRARY)
#define TAMBER_EXPORT Q_DECL_EXPORT
#else
#define TAMBER_EXPORT
#endif

// How the host asks a reading view to open a book; only ReadingNavigationRestore
// (open at the saved position) means anything to a comic view.
enum ReadingNavigationType {
    ReadingNavigationDefault = 0,
    ReadingNavigationJump = 1,
    ReadingNavigationRestore = 2
};

// Rotation of the reading view; 1 and 3 are landscape.
enum ScreenOrientation {
    ScreenOrientationUnknown = -1,
    ScreenOrientationPortrait = 0,
    ScreenOrientationLandscape = 1,
    ScreenOrientationPortraitInverted = 2,
    ScreenOrientationLandscapeInverted = 3
};

#endif
