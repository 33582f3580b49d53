// SPDX-License-Identifier: MIT
#ifndef TAMBER_GESTURERECEIVER_H
#define TAMBER_GESTURERECEIVER_H

#include "TamberGlobal.h"

class GestureDelegate;
class QEvent;
class QGestureEvent;

// Receives gesture events and hands each gesture to its delegate.
class TAMBER_EXPORT GestureReceiver
{
public:
    GestureReceiver();
    virtual ~GestureReceiver();

    virtual bool event(QEvent* event);
    // Hands every gesture of the event to the delegate's matching handler.
    virtual bool gestureEvent(QGestureEvent* event);
    virtual bool sendGestureToDelegate(QGestureEvent* event, GestureDelegate* delegate);

    void setGestureDelegate(GestureDelegate* delegate);
    GestureDelegate* gestureDelegate() const;

private:
    GestureDelegate* m_delegate;
};

#endif
