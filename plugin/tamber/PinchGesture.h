// SPDX-License-Identifier: MIT
#ifndef TAMBER_PINCHGESTURE_H
#define TAMBER_PINCHGESTURE_H

#include "TamberGlobal.h"

#include <QGesture>
#include <QPointF>

// Two fingers moving apart or together.
class TAMBER_EXPORT PinchGesture : public QGesture
{
    Q_OBJECT

public:
    explicit PinchGesture(QObject* parent = nullptr);
    ~PinchGesture() override;

    // Scale since the previous report of this pinch.
    qreal scaleFactor() const;
    void setScaleFactor(qreal factor);
    QPointF centerPoint() const;
    void setCenterPoint(const QPointF& point);

    void setGestureState(Qt::GestureState state);

private:
    qreal m_scaleFactor;
    QPointF m_centerPoint;
};

#endif
