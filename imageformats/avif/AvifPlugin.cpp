// SPDX-License-Identifier: MIT
// The plug-in that Qt's image readers find in an imageformats folder: Qt 5
// reads its keys from avif.json, Qt 4 asks keys() and checks the build key
// that Q_EXPORT_PLUGIN2 stamps into the library.

#include "AvifHandler.h"
#include "ImageFormatSupport.h"

#include <QStringList>

class AvifPlugin : public QImageIOPlugin
{
    Q_OBJECT
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QImageIOHandlerFactoryInterface" FILE "avif.json")
#else
public:
    QStringList keys() const
    {
        return QStringList() << QLatin1String("avif");
    }
#endif

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override
    {
        return ImageFormatSupport::capabilities<AvifHandler>(device, format, "avif");
    }

    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override
    {
        return ImageFormatSupport::create<AvifHandler>(device, format);
    }
};

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
Q_EXPORT_PLUGIN2(qavif, AvifPlugin)
#endif

#include "AvifPlugin.moc"
