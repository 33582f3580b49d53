#include "PanningViewMixin.h"

#include "DragGesture.h"
#include "HostTrace.h"
#include "PinchGesture.h"
#include "ZoomController.h"

PanningViewMixin::PanningViewMixin()
    : m_zoomController(nullptr)
    , m_animationMode(false)
{
}

PanningViewMixin::~PanningViewMixin() = default;

void PanningViewMixin::setZoomController(ZoomController* controller)
{
    m_zoomController = controller;
}

void PanningViewMixin::enterAnimationMode()
{
    HostTrace::Call call("PanningViewMixin::enterAnimationMode");
    if (m_animationMode)
        return;
    m_animationMode = true;
    onEnterAnimationMode();
}

void PanningViewMixin::processDragGesture(DragGesture* gesture, double zoom)
{
    HostTrace::Call call("PanningViewMixin::processDragGesture",
        { QVariant::fromValue<QObject*>(gesture), zoom });
    if (!gesture)
        return;
    if (gesture->state() != Qt::GestureCanceled && !gesture->delta().isNull())
        processOffset(gesture->delta());
    if (m_animationMode
        && (gesture->state() == Qt::GestureFinished || gesture->state() == Qt::GestureCanceled)) {
        m_animationMode = false;
        onExitFromAnimationMode();
    }
}

void PanningViewMixin::processPinchGesture(PinchGesture* gesture)
{
    HostTrace::Call call("PanningViewMixin::processPinchGesture",
        { QVariant::fromValue<QObject*>(gesture) });
    if (!gesture || !m_zoomController || gesture->state() == Qt::GestureCanceled)
        return;
    m_zoomController->setZoomFactor(m_zoomController->currentZoomFactor() * gesture->scaleFactor());
}

void PanningViewMixin::processOffset(const QPoint&) {}
void PanningViewMixin::onEnterAnimationMode() {}
void PanningViewMixin::onExitFromAnimationMode() {}

ZoomController* PanningViewMixin::panningZoomController() const
{
    return m_zoomController;
}

bool PanningViewMixin::isInAnimationMode() const
{
    return m_animationMode;
}
