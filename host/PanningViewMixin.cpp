// SPDX-License-Identifier: MIT
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
    QPoint movement;
    {
        HostTrace::Call call("PanningViewMixin::processDragGesture",
            { QVariant::fromValue<QObject*>(gesture), zoom });
        if (!gesture)
            return;
        // One report per drag, when the finger lifts: the view weighs the whole
        // movement against its page-turning threshold, and an e-ink page is
        // redrawn once per drag. A drag made by hand in one piece has no state.
        switch (gesture->state()) {
        case Qt::GestureStarted:
        case Qt::GestureUpdated:
            m_dragMovement += gesture->delta();
            return;
        case Qt::GestureCanceled:
            break;
        default:
            movement = m_dragMovement + gesture->delta();
            break;
        }
        m_dragMovement = QPoint();
        if (m_animationMode) {
            m_animationMode = false;
            onExitFromAnimationMode();
        }
    }
    // Outside the traced call: what the view does with the movement (turn the
    // page, save, finish the book) is the plug-in's own doing. Last, because
    // the host may let go of the view at the end of the book.
    if (!movement.isNull())
        processOffset(movement);
}

void PanningViewMixin::processPinchGesture(PinchGesture* gesture)
{
    HostTrace::Call call(
        "PanningViewMixin::processPinchGesture", { QVariant::fromValue<QObject*>(gesture) });
    if (!gesture || !m_zoomController || gesture->state() == Qt::GestureCanceled)
        return;
    m_zoomController->setZoomFactor(
        m_zoomController->currentZoomFactor() * gesture->scaleFactor(), gesture->centerPoint());
}

void PanningViewMixin::processOffset(const QPoint&) { }
void PanningViewMixin::onEnterAnimationMode() { }
void PanningViewMixin::onExitFromAnimationMode() { }

ZoomController* PanningViewMixin::panningZoomController() const
{
    return m_zoomController;
}

bool PanningViewMixin::isInAnimationMode() const
{
    return m_animationMode;
}
