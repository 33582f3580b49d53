// SPDX-License-Identifier: MIT
#ifndef TAMBER_ZOOMCONTROLLER_H
#define TAMBER_ZOOMCONTROLLER_H

#include "SocialEventType.h"
#include "TamberGlobal.h"
#include "Volume.h"

#include <QObject>
#include <QPointF>
#include <QUrl>

// Holds a reading view's zoom factor within [minimum, maximum].
class TAMBER_EXPORT ZoomController : public QObject
{
    Q_OBJECT

public:
    ZoomController(QObject* parent, double minimum, double maximum, double initial);
    ~ZoomController() override;

    double currentZoomFactor() const;
    double minimumZoomFactor() const;
    double maximumZoomFactor() const;

    // Clamps to the bounds and, when the factor changes, says so once: with
    // the point a pinch centres on when it gives one, plainly otherwise.
    void setZoomFactor(double factor);
    void setZoomFactor(double factor, const QPointF& offset);

    void setAnalyticsEventInfo(const SocialEventType& type, const Volume& volume, const QUrl& url);

signals:
    void zoomFactorUpdated(double oldFactor, double newFactor);
    void zoomFactorUpdatedWithOffset(double oldFactor, double newFactor, QPointF offset);

private:
    bool change(double factor);

    double m_minimum;
    double m_maximum;
    double m_factor;
    QString m_analyticsVolumeId;
};

#endif
