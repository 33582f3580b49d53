#include "ComicsReaderParser.h"

#include <QImageReader>
#include <QList>

ComicsReaderParser::ComicsReaderParser() = default;
ComicsReaderParser::~ComicsReaderParser() = default;

void ComicsReaderParser::parse(const QString&) {}
void ComicsReaderParser::parseCoverImage(const Volume&) {}

bool ComicsReaderParser::isSupportedImage(const QString& name)
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();

    for (const QByteArray& format : formats) {
        // A bare ending test, without a dot: "scanjpg" counts as a JPEG.
        if (name.endsWith(QString::fromLatin1(format.constData()), Qt::CaseInsensitive)
            && !name.contains(QLatin1String("__MACOSX/")))
            return true;
    }
    return false;
}
