#include "GestureRecognizers.h"

#include "DragGesture.h"
#include "PinchGesture.h"
#include "SwipeGesture.h"
#include "TapGesture.h"

// Filled when the host registers its recognizers at start-up.
Qt::GestureType TapGestureRecognizer::_gestureType = Qt::CustomGesture;
Qt::GestureType DragGestureRecognizer::_gestureType = Qt::CustomGesture;
Qt::GestureType SwipeGestureRecognizer::_gestureType = Qt::CustomGesture;
Qt::GestureType PinchGestureRecognizer::_gestureType = Qt::CustomGesture;

QGesture* TapGestureRecognizer::create(QObject*) { return new TapGesture; }
QGestureRecognizer::Result TapGestureRecognizer::recognize(QGesture*, QObject*, QEvent*) { return Ignore; }
void TapGestureRecognizer::reset(QGesture* gesture) { QGestureRecognizer::reset(gesture); }

QGesture* DragGestureRecognizer::create(QObject*) { return new DragGesture; }
QGestureRecognizer::Result DragGestureRecognizer::recognize(QGesture*, QObject*, QEvent*) { return Ignore; }
void DragGestureRecognizer::reset(QGesture* gesture) { QGestureRecognizer::reset(gesture); }

QGesture* SwipeGestureRecognizer::create(QObject*) { return new SwipeGesture; }
QGestureRecognizer::Result SwipeGestureRecognizer::recognize(QGesture*, QObject*, QEvent*) { return Ignore; }
void SwipeGestureRecognizer::reset(QGesture* gesture) { QGestureRecognizer::reset(gesture); }

QGesture* PinchGestureRecognizer::create(QObject*) { return new PinchGesture; }
QGestureRecognizer::Result PinchGestureRecognizer::recognize(QGesture*, QObject*, QEvent*) { return Ignore; }
void PinchGestureRecognizer::reset(QGesture* gesture) { QGestureRecognizer::reset(gesture); }
