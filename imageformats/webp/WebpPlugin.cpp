// SPDX-License-Identifier: MIT
// The plug-in that Qt's image readers find in an imageformats folder: Qt 5
// reads its keys from webp.json, Qt 4 asks keys() and checks the build key
// that Q_EXPORT_PLUGIN2 stamps into the library.

#include "WebpHandler.h"

#include <QImageIOPlugin>
#include <QStringList>

class WebpPlugin : public QImageIOPlugin
{
    Q_OBJECT
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QImageIOHandlerFactoryInterface" FILE "webp.json")
#else
public:
    QStringList keys() const
    {
        return QStringList() << QLatin1String("webp");
    }
#endif

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override
    {
        if (!format.isEmpty() && format != "webp")
            return Capabilities();
        // The bytes decide where they can be seen without consuming them, so
        // that a PNG named .webp goes on to Qt's other readers: Qt 5 would
        // check with the handler's canRead(), Qt 4 would not.
        if (device && device->isOpen() && !device->isSequential())
            return WebpHandler::canRead(device) ? CanRead : Capabilities();
        return format.isEmpty() ? Capabilities() : CanRead;
    }

    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override
    {
        QImageIOHandler* handler = new WebpHandler;
        handler->setDevice(device);
        handler->setFormat(format);
        return handler;
    }
};

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
Q_EXPORT_PLUGIN2(qwebp, WebpPlugin)
#endif

#include "WebpPlugin.moc"
