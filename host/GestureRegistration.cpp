// SPDX-License-Identifier: MIT
#include "GestureRegistration.h"

#include "GestureRecognizers.h"

void registerGestureRecognizers()
{
    // Qt owns the recognizers from here on.
    static const bool registered = [] {
        TapGestureRecognizer::_gestureType
            = QGestureRecognizer::registerRecognizer(new TapGestureRecognizer);
        DragGestureRecognizer::_gestureType
            = QGestureRecognizer::registerRecognizer(new DragGestureRecognizer);
        SwipeGestureRecognizer::_gestureType
            = QGestureRecognizer::registerRecognizer(new SwipeGestureRecognizer);
        PinchGestureRecognizer::_gestureType
            = QGestureRecognizer::registerRecognizer(new PinchGestureRecognizer);
        return true;
    }();
    Q_UNUSED(registered)
}
