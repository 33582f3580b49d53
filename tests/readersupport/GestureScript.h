#ifndef GESTURESCRIPT_H
#define GESTURESCRIPT_H

#include <QEvent>
#include <QGestureRecognizer>
#include <QString>

#include <memory>

class QGesture;

// Input events written as a script, for feeding recognizers.

// One event of a script such as "press 10,10 @0; move 40,10 @20" (screen
// positions, then the timestamp): press, move, release (left button); rpress
// (right button); hover (no button); down, slide, up (one finger); two A B
// (two fingers down); lift A B (the second of two lifted); wheel N and
// plainwheel N (wheel steps with and without Ctrl); ctrlup.
std::unique_ptr<QEvent> makeInputEvent(const QString& step);

// What a report of the gesture carries, in brackets: a drag's delta, a
// swipe's directions, a pinch's scale.
QString payload(QGesture* gesture);

// Feeds the script to the recognizer as Qt's gesture manager would, resetting
// the gesture after it finishes or is canceled, and names each result:
// "ignore", "maybe", "cancel", "trigger(...)" or "finish(...)" with the payload.
QString recognizeScript(QGestureRecognizer* recognizer, const QString& script);

#endif
