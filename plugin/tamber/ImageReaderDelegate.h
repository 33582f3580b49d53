// SPDX-License-Identifier: MIT
#ifndef TAMBER_IMAGEREADERDELEGATE_H
#define TAMBER_IMAGEREADERDELEGATE_H

#include "TamberGlobal.h"

class ZoomController;

// What the host asks of a view that shows images: zoom, orientation and fitting.
class ImageReaderDelegate
{
public:
    virtual ZoomController* zoomController() const = 0;
    virtual void setOrientation(ScreenOrientation orientation) = 0;
    virtual ScreenOrientation orientation() const = 0;
    virtual void fitWidth() = 0;
    virtual void fitHeight() = 0;
    virtual void rotate() = 0;

protected:
    ~ImageReaderDelegate() = default;
};

#endif
