// SPDX-License-Identifier: MIT
#ifndef TAMBER_DRAGGESTURE_H
#define TAMBER_DRAGGESTURE_H

#include "TamberGlobal.h"

#include <QGesture>
#include <QPoint>

// A finger held down and moved.
class TAMBER_EXPORT DragGesture : public QGesture
{
    Q_OBJECT

public:
    explicit DragGesture(QObject* parent = nullptr);
    ~DragGesture() override;

    // Finger movement since the previous report of this drag.
    QPoint delta() const;
    void setDelta(const QPoint& delta);
    QPoint position() const;
    void setPosition(const QPoint& position);

    void setGestureState(Qt::GestureState state);

private:
    QPoint m_delta;
    QPoint m_position;
};

#endif
