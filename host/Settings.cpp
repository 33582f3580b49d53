// SPDX-License-Identifier: MIT
// Device and settings objects. Values live in the host's QSettings, so that
// the host program's "config" command and the parser see the same account.

#include "Device.h"
#include "QtCompat.h"
#include "HostTrace.h"
#include "PagewiseSettings.h"
#include "Settings.h"

#include <QSettings>
#include <QSharedData>

namespace {
const QString accountNameKey = QStringLiteral("social/accountName");
}

class DevicePrivate : public QSharedData
{
public:
    QString model = QStringLiteral("tamber desktop");
};

Device::Device()
    : d(new DevicePrivate)
{
}

Device::Device(const Device& other) = default;
Device& Device::operator=(const Device& other) = default;
Device::~Device() = default;

QString Device::model() const
{
    return d->model;
}

Settings::Settings(const Device& device)
    : device(device)
{
}

Settings::~Settings() = default;

QVariant Settings::value(const QString& key, const QVariant& defaultValue) const
{
    return QSettings(QStringLiteral("tamber"), QStringLiteral("tamber")).value(key, defaultValue);
}

void Settings::setValue(const QString& key, const QVariant& value)
{
    QSettings settings(QStringLiteral("tamber"), QStringLiteral("tamber"));
    if (value.toString().isEmpty())
        settings.remove(key);
    else
        settings.setValue(key, value);
    settings.sync();
}

PagewiseSettings::PagewiseSettings(const Device& device)
    : Settings(device)
{
}

PagewiseSettings::~PagewiseSettings() = default;

QString PagewiseSettings::facebookName() const
{
    HostTrace::Call call("PagewiseSettings::facebookName");
    return value(accountNameKey).toString();
}

void PagewiseSettings::setFacebookName(const QString& name)
{
    setValue(accountNameKey, name);
}
