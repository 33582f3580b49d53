// SPDX-License-Identifier: MIT
#ifndef TAMBER_GESTUREDELEGATE_H
#define TAMBER_GESTUREDELEGATE_H

#include "TamberGlobal.h"

class DragGesture;
class GestureReceiver;
class PinchGesture;
class QPanGesture;
class SwipeGesture;
class TapGesture;
class TwoFingerScrollGesture;

// Handles the gestures that a GestureReceiver gets. Every handler returns
// whether it handled the gesture; the defaults handle nothing. The interface
// has no virtual destructor: nobody deletes a delegate through it.
class TAMBER_EXPORT GestureDelegate
{
public:
    virtual bool panGesture(GestureReceiver* receiver, QPanGesture* gesture);
    virtual bool pinchGesture(GestureReceiver* receiver, PinchGesture* gesture);
    virtual bool swipeGesture(GestureReceiver* receiver, SwipeGesture* gesture);
    virtual bool tapGesture(GestureReceiver* receiver, TapGesture* gesture);
    virtual bool allowDoubleTap(GestureReceiver* receiver, TapGesture* gesture);
    virtual bool dragGesture(GestureReceiver* receiver, DragGesture* gesture);
    virtual bool twoFingerScrollGesture(GestureReceiver* receiver, TwoFingerScrollGesture* gesture);
    virtual bool swipeGestureForTouchPad(GestureReceiver* receiver, SwipeGesture* gesture);
    virtual bool tapGestureForTouchPad(GestureReceiver* receiver, TapGesture* gesture);

protected:
    ~GestureDelegate() = default;
};

#endif
