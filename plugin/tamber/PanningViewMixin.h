// SPDX-License-Identifier: MIT
#ifndef TAMBER_PANNINGVIEWMIXIN_H
#define TAMBER_PANNINGVIEWMIXIN_H

#include "TamberGlobal.h"

#include <QPoint>

class DragGesture;
class PinchGesture;
class ZoomController;

// Turns drags into processOffset calls with the finger's movement and pinches
// into zoom changes on the view's zoom controller. A drag is reported once, with
// its whole movement, when it finishes.
class TAMBER_EXPORT PanningViewMixin
{
public:
    PanningViewMixin();
    virtual ~PanningViewMixin();

    void setZoomController(ZoomController* controller);
    void enterAnimationMode();
    void processDragGesture(DragGesture* gesture, double zoom);
    void processPinchGesture(PinchGesture* gesture);

    virtual void processOffset(const QPoint& offset);
    virtual void onEnterAnimationMode();
    virtual void onExitFromAnimationMode();

protected:
    ZoomController* panningZoomController() const;
    bool isInAnimationMode() const;

private:
    ZoomController* m_zoomController;
    bool m_animationMode;
    // Movement of the drag under way, not yet reported.
    QPoint m_dragMovement;
};

#endif
