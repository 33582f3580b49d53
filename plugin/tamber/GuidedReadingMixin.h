// SPDX-License-Identifier: MIT
#ifndef TAMBER_GUIDEDREADINGMIXIN_H
#define TAMBER_GUIDEDREADINGMIXIN_H

#include "TamberGlobal.h"

class QRect;

// Guided reading: moving through a book chapter by chapter, panel by panel.
class TAMBER_EXPORT GuidedReadingMixin
{
public:
    GuidedReadingMixin();
    virtual ~GuidedReadingMixin();

    virtual void goToChapter(int index);
    virtual void panAndFitToRect(const QRect& rect);
};

#endif
