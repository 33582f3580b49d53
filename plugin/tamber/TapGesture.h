// SPDX-License-Identifier: MIT
#ifndef TAMBER_TAPGESTURE_H
#define TAMBER_TAPGESTURE_H

#include "TamberGlobal.h"

#include <QGesture>
#include <QPointF>

// A tap of one finger.
class TAMBER_EXPORT TapGesture : public QGesture
{
    Q_OBJECT

public:
    explicit TapGesture(QObject* parent = nullptr);
    ~TapGesture() override;

    // Where the finger touched, in screen coordinates.
    QPointF position() const;
    void setPosition(const QPointF& position);

    // For gestures that the host makes itself rather than a recognizer.
    void setGestureState(Qt::GestureState state);

private:
    QPointF m_position;
};

#endif
