// SPDX-License-Identifier: MIT
#include "GestureDelegate.h"

// By default a delegate handles nothing.

bool GestureDelegate::panGesture(GestureReceiver*, QPanGesture*) { return false; }
bool GestureDelegate::pinchGesture(GestureReceiver*, PinchGesture*) { return false; }
bool GestureDelegate::swipeGesture(GestureReceiver*, SwipeGesture*) { return false; }
bool GestureDelegate::tapGesture(GestureReceiver*, TapGesture*) { return false; }
bool GestureDelegate::allowDoubleTap(GestureReceiver*, TapGesture*) { return false; }
bool GestureDelegate::dragGesture(GestureReceiver*, DragGesture*) { return false; }
bool GestureDelegate::twoFingerScrollGesture(GestureReceiver*, TwoFingerScrollGesture*) { return false; }
bool GestureDelegate::swipeGestureForTouchPad(GestureReceiver*, SwipeGesture*) { return false; }
bool GestureDelegate::tapGestureForTouchPad(GestureReceiver*, TapGesture*) { return false; }
