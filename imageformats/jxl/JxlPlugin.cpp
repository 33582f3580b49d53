// SPDX-License-Identifier: MIT
// The plug-in that Qt's image readers find in an imageformats folder: Qt 5
// reads its keys from jxl.json, Qt 4 asks keys() and checks the build key
// that Q_EXPORT_PLUGIN2 stamps into the library.

#include "ImageFormatSupport.h"
#include "JxlHandler.h"

#include <QStringList>

class JxlPlugin : public QImageIOPlugin
{
    Q_OBJECT
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QImageIOHandlerFactoryInterface" FILE "jxl.json")
#else
public:
    QStringList keys() const
    {
        return QStringList() << QLatin1String("jxl");
    }
#endif

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override
    {
        return ImageFormatSupport::capabilities<JxlHandler>(device, format, "jxl");
    }

    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override
    {
        return ImageFormatSupport::create<JxlHandler>(device, format);
    }
};

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
Q_EXPORT_PLUGIN2(qjxl, JxlPlugin)
#endif

#include "JxlPlugin.moc"
