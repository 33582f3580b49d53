// SPDX-License-Identifier: MIT
#ifndef TAMBER_SWIPEGESTURE_H
#define TAMBER_SWIPEGESTURE_H

#include "TamberGlobal.h"

#include <QGesture>
#include <QSwipeGesture>

// A quick flick. Directions are numbered as QSwipeGesture::SwipeDirection:
// horizontal Left 1, Right 2; vertical Up 3, Down 4; 0 for none.
class TAMBER_EXPORT SwipeGesture : public QGesture
{
    Q_OBJECT

public:
    explicit SwipeGesture(QObject* parent = nullptr);
    ~SwipeGesture() override;

    QSwipeGesture::SwipeDirection horizontalDirection() const;
    void setHorizontalDirection(QSwipeGesture::SwipeDirection direction);
    QSwipeGesture::SwipeDirection verticalDirection() const;
    void setVerticalDirection(QSwipeGesture::SwipeDirection direction);

    void setGestureState(Qt::GestureState state);

private:
    QSwipeGesture::SwipeDirection m_horizontal;
    QSwipeGesture::SwipeDirection m_vertical;
};

#endif
