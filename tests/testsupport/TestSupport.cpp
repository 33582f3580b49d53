#include "TestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QPainter>

#include <zip.h>

namespace TestSupport {

QString samplesDir()
{
    const QString dir = QStringLiteral(TAMBER_SAMPLES_DIR);
    return QFileInfo::exists(dir + QStringLiteral("/Captain Science #001.cbz")) ? dir : QString();
}

QString sampleCbz()
{
    return samplesDir() + QStringLiteral("/Captain Science #001.cbz");
}

QString sampleCbr()
{
    return samplesDir() + QStringLiteral("/Captain Science #001-cbi.cbr");
}

QString binDir()
{
    return QStringLiteral(TAMBER_BIN_DIR);
}

bool writeZip(const QString& path, const QList<ZipEntry>& entries)
{
    QFile::remove(path);
    int error = 0;
    zip_t* archive = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (!archive)
        return false;
    // libzip reads the buffers when the archive is closed, so keep them alive.
    QList<QByteArray> keep;
    for (const ZipEntry& entry : entries) {
        keep << entry.second;
        zip_source_t* source = zip_source_buffer(archive, keep.last().constData(),
            zip_uint64_t(keep.last().size()), 0);
        if (!source)
            return false;
        const bool isDirectory = entry.first.endsWith('/');
        const zip_int64_t index = isDirectory
            ? zip_dir_add(archive, entry.first.constData(), ZIP_FL_ENC_RAW)
            : zip_file_add(archive, entry.first.constData(), source, ZIP_FL_ENC_RAW | ZIP_FL_OVERWRITE);
        if (isDirectory)
            zip_source_free(source);
        if (index < 0) {
            if (!isDirectory)
                zip_source_free(source);
            zip_discard(archive);
            return false;
        }
    }
    return zip_close(archive) == 0;
}

QImage makePage(int width, int height, const QColor& ink)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor(240, 240, 230));
    QPainter painter(&image);
    painter.setPen(QPen(ink, qMax(1, width / 50)));
    painter.drawRect(image.rect().adjusted(width / 20, height / 20, -width / 20, -height / 20));
    return image;
}

QByteArray encode(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

} // namespace TestSupport
