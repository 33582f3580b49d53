// SPDX-License-Identifier: MIT
#ifndef TAMBER_GESTURERECOGNIZERS_H
#define TAMBER_GESTURERECOGNIZERS_H

#include "TamberGlobal.h"

#include <QGestureRecognizer>

// The host's recognizers of touch input. Each registers its gesture type with Qt
// when the host starts (registerGestureRecognizers) and keeps it in _gestureType.

class TAMBER_EXPORT TapGestureRecognizer : public QGestureRecognizer
{
public:
    static Qt::GestureType _gestureType;

    QGesture* create(QObject* target) override;
    Result recognize(QGesture* gesture, QObject* watched, QEvent* event) override;
    void reset(QGesture* gesture) override;
};

class TAMBER_EXPORT DragGestureRecognizer : public QGestureRecognizer
{
public:
    static Qt::GestureType _gestureType;

    QGesture* create(QObject* target) override;
    Result recognize(QGesture* gesture, QObject* watched, QEvent* event) override;
    void reset(QGesture* gesture) override;
};

class TAMBER_EXPORT SwipeGestureRecognizer : public QGestureRecognizer
{
public:
    static Qt::GestureType _gestureType;

    QGesture* create(QObject* target) override;
    Result recognize(QGesture* gesture, QObject* watched, QEvent* event) override;
    void reset(QGesture* gesture) override;
};

class TAMBER_EXPORT PinchGestureRecognizer : public QGestureRecognizer
{
public:
    static Qt::GestureType _gestureType;

    QGesture* create(QObject* target) override;
    Result recognize(QGesture* gesture, QObject* watched, QEvent* event) override;
    void reset(QGesture* gesture) override;
};

#endif
