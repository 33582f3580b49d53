// SPDX-License-Identifier: MIT
// The plug-in that Qt's image readers find in an imageformats folder: Qt 5
// reads its keys from webp.json, Qt 4 asks keys() and checks the build key
// that Q_EXPORT_PLUGIN2 stamps into the library.

#include "ImageFormatSupport.h"
#include "WebpHandler.h"

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
        return ImageFormatSupport::capabilities<WebpHandler>(device, format, "webp");
    }

    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override
    {
        return ImageFormatSupport::create<WebpHandler>(device, format);
    }
};

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
Q_EXPORT_PLUGIN2(qwebp, WebpPlugin)
#endif

#include "WebpPlugin.moc"
