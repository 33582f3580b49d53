// SPDX-License-Identifier: MIT
#ifndef TAMBER_DEVICE_H
#define TAMBER_DEVICE_H

#include "TamberGlobal.h"

#include <QExplicitlySharedDataPointer>
#include <QString>

class DevicePrivate;

// Description of the device the host runs on.
class TAMBER_EXPORT Device
{
public:
    Device();
    Device(const Device& other);
    Device& operator=(const Device& other);
    virtual ~Device();

    QString model() const;

private:
    QExplicitlySharedDataPointer<DevicePrivate> d;
};

#endif
