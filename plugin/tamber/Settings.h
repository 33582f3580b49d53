// SPDX-License-Identifier: MIT
#ifndef TAMBER_SETTINGS_H
#define TAMBER_SETTINGS_H

#include "Device.h"
#include "TamberGlobal.h"

#include <QString>
#include <QVariant>

// Base of the host's settings objects; values live in the host's QSettings
// (organisation "tamber").
class TAMBER_EXPORT Settings
{
public:
    explicit Settings(const Device& device);
    virtual ~Settings();

protected:
    QVariant value(const QString& key, const QVariant& defaultValue = QVariant()) const;
    void setValue(const QString& key, const QVariant& value);

    Device device;
};

#endif
