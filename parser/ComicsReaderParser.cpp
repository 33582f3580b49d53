// SPDX-License-Identifier: MIT
#include "ComicsReaderParser.h"

#include "ComicArchive.h"
#include "ComicArchiveFactory.h"
#include "ComicPageNames.h"
#include "Device.h"
#include "PagewiseSettings.h"

#include <QDateTime>
#include <QDebug>
#include <QFileInfo>
#include <QImageReader>
#include <QList>

#include <memory>

namespace {

const QString userId = QStringLiteral("cbz_user");

QString withoutFileScheme(QString path)
{
    return path.remove(QStringLiteral("file://"));
}

// Cover images are stored under the path with separators and dots flattened.
QString imageIdFor(QString path)
{
    return path.replace(QLatin1Char('/'), QLatin1Char('_'))
        .replace(QLatin1Char(':'), QLatin1Char('_'))
        .replace(QLatin1Char('.'), QLatin1Char('_'))
        .replace(QLatin1Char(' '), QLatin1Char('_'));
}

// Deliberately only the two comic types: image files are recorded as cbz.
QString mimeTypeFor(const QString& path)
{
    return path.endsWith(QLatin1String("cbr"), Qt::CaseInsensitive)
        ? QStringLiteral("application/x-cbr")
        : QStringLiteral("application/x-cbz");
}

// Drawings made on the device are by the reader's social account.
QString authorFor(const QString& cleanPath)
{
    if (!cleanPath.startsWith(QLatin1String("/mnt/onboard/drawings/")))
        return ComicsReaderParser::tr("Unknown Author");
    if (PagewiseSettings(Device()).facebookName().isEmpty())
        return QStringLiteral("Ostra Sketch");
    // Read again from fresh settings, deliberately, as the host expects.
    return PagewiseSettings(Device()).facebookName();
}

} // namespace

ComicsReaderParser::ComicsReaderParser() = default;
ComicsReaderParser::~ComicsReaderParser() = default;

void ComicsReaderParser::parse(const QString& path)
{
    const QString cleanPath = withoutFileScheme(path);
    const QFileInfo info(cleanPath);
    const QStringList pages = comicPageNames(path);
    if (pages.isEmpty()) {
        qDebug() << "no comics found : " << path;
        return;
    }
    const QString mimeType = mimeTypeFor(path);

    Volume volume;
    volume.setId(path);
    volume.setPageCount(pages.size());
    volume.setContentType(QStringLiteral("6"));
    volume.setAttribute(ATTRIBUTE_TITLE, info.completeBaseName());
    volume.setAttribute(ATTRIBUTE_DESCRIPTION, QString());
    volume.setAttribute(ATTRIBUTE_ATTRIBUTION, authorFor(cleanPath));
    volume.setAttribute(ATTRIBUTE_MIME_TYPE, mimeType);
    volume.setAttribute(ATTRIBUTE_DATE, QtCompat::creationTime(info));
    volume.setUserID(userId);
    volume.setImageId(imageIdFor(path));

    // The pages are announced before their book.
    const QString pageTitle = tr("Page %1");
    for (int i = 0; i < pages.size(); ++i) {
        Pagelet pagelet;
        pagelet.setId(path + QLatin1Char('/') + pages.at(i));
        pagelet.setContentType(QStringLiteral("9"));
        pagelet.setVolumeIndex(i);
        pagelet.setBookId(path);
        pagelet.setTitle(pageTitle.arg(i + 1));
        pagelet.setAttribute(ATTRIBUTE_MIME_TYPE, mimeType);
        pagelet.setUserID(userId);
        emit pageletParsed(pagelet);
    }
    emit volumeParsed(volume, false, false);
}

void ComicsReaderParser::parseCoverImage(const Volume& volume)
{
    const QStringList pages = comicPageNames(volume.getId());
    QImage cover;
    if (!pages.isEmpty()) {
        const std::unique_ptr<ComicArchive> archive(
            ComicArchiveFactory::instance(withoutFileScheme(volume.getId())));
        if (archive)
            cover = archive->data(pages.first());
    }
    emit imageParsed(volume, cover);
}

bool ComicsReaderParser::isSupportedImage(const QString& name)
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();

    for (const QByteArray& format : formats) {
        // A bare ending test, without a dot: "scanjpg" counts as a JPEG. The
        // format is compared as Latin-1 in place, with no string made per entry.
        if (name.endsWith(QLatin1String(format.constData()), Qt::CaseInsensitive)
            && !name.contains(QLatin1String("__MACOSX/")))
            return true;
    }
    return false;
}
