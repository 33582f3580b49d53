// SPDX-License-Identifier: MIT
#include "ComicsReaderPlugin.h"

#include "ComicsReader.h"
#include "ComicsReaderParser.h"

#include "QtCompat.h"

#include <QImageReader>
#include <QList>

namespace {

// A format name as Qt gives it: Latin-1 bytes up to the first NUL.
QString formatName(const QByteArray& format)
{
    return QString::fromLatin1(format.constData());
}

} // namespace

ComicsReaderPlugin::ComicsReaderPlugin()
    : QObject(nullptr)
{
}

ComicsReaderPlugin::~ComicsReaderPlugin() = default;

QStringList ComicsReaderPlugin::mimeTypes()
{
    // Each of the three format lists is filled on its own first use.
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();

    QStringList types;
    for (const QByteArray& format : formats)
        types << QStringLiteral("image/") + formatName(format);
    types << QStringLiteral("application/x-cbz") << QStringLiteral("application/x-cbr");
    return types;
}

QStringList ComicsReaderPlugin::fileExtensions()
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();

    // Comics first here, the reverse of mimeTypes().
    QStringList patterns;
    patterns << QStringLiteral("*.cbz") << QStringLiteral("*.cbr");
    for (const QByteArray& format : formats)
        patterns << QStringLiteral("*.") + formatName(format);
    return patterns;
}

QWidget* ComicsReaderPlugin::reader(PluginState* state, QWidget* parent)
{
    return new ComicsReader(parent, state);
}

ParserInterface* ComicsReaderPlugin::parser()
{
    return new ComicsReaderParser();
}
