// SPDX-License-Identifier: MIT
#include "ZoomController.h"

#include "HostTrace.h"

#include <QtGlobal>

ZoomController::ZoomController(QObject* parent, double minimum, double maximum, double initial)
    : QObject(parent)
    , m_minimum(minimum)
    , m_maximum(qMax(minimum, maximum))
    , m_factor(qBound(m_minimum, initial, m_maximum))
{
}

ZoomController::~ZoomController() = default;

double ZoomController::currentZoomFactor() const
{
    return m_factor;
}

double ZoomController::minimumZoomFactor() const
{
    return m_minimum;
}

double ZoomController::maximumZoomFactor() const
{
    return m_maximum;
}

void ZoomController::setZoomFactor(double factor)
{
    HostTrace::Call call("ZoomController::setZoomFactor", { factor });
    const double old = m_factor;
    if (change(factor))
        emit zoomFactorUpdated(old, m_factor);
}

void ZoomController::setZoomFactor(double factor, const QPointF& offset)
{
    HostTrace::Call call("ZoomController::setZoomFactor", { factor, offset });
    const double old = m_factor;
    if (change(factor))
        emit zoomFactorUpdatedWithOffset(old, m_factor, offset);
}

bool ZoomController::change(double factor)
{
    const double bounded = qBound(m_minimum, factor, m_maximum);
    if (bounded == m_factor)
        return false;
    m_factor = bounded;
    return true;
}

void ZoomController::setAnalyticsEventInfo(const SocialEventType& type, const Volume& volume,
    const QUrl& url)
{
    HostTrace::Call call("ZoomController::setAnalyticsEventInfo",
        { type.name(), QVariant::fromValue(volume), url.toString() });
    m_analyticsVolumeId = volume.getId();
}
