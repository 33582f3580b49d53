// SPDX-License-Identifier: MIT
#ifndef TAMBER_TWOFINGERSCROLLGESTURE_H
#define TAMBER_TWOFINGERSCROLLGESTURE_H

#include "TamberGlobal.h"

#include <QGesture>
#include <QPointF>

// Two fingers moving together in one direction.
class TAMBER_EXPORT TwoFingerScrollGesture : public QGesture
{
    Q_OBJECT

public:
    explicit TwoFingerScrollGesture(QObject* parent = nullptr);
    ~TwoFingerScrollGesture() override;

    QPointF delta() const;
    void setDelta(const QPointF& delta);

private:
    QPointF m_delta;
};

#endif
