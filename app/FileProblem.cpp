// SPDX-License-Identifier: MIT
#include "FileProblem.h"
#include "HostCompat.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QTextCodec>

namespace {

bool startsWithAny(const QByteArray& head, std::initializer_list<QByteArray> magics)
{
    for (const QByteArray& magic : magics) {
        if (head.startsWith(magic))
            return true;
    }
    return false;
}

const QByteArray zipMagic("PK\x03\x04", 4);
const QByteArray emptyZipMagic("PK\x05\x06", 4);
const QByteArray rarMagic("Rar!\x1a\x07", 6);
const QByteArray sevenZipMagic("7z\xbc\xaf\x27\x1c", 6);

} // namespace

QString FileProblem::of(const QString& pathOrUrl)
{
    const QString path = pathOrUrl.startsWith(QLatin1String("file://")) ? pathOrUrl.mid(7)
                                                                        : pathOrUrl;
    const QFileInfo info(path);
    if (!info.exists())
        return info.isSymLink() ? QStringLiteral("the file is gone (a dangling link)")
                                : QStringLiteral("the file is gone");
    if (info.isDir())
        return QStringLiteral("a folder, not a file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        QString reason = file.errorString();
        if (!reason.isEmpty())
            reason[0] = reason.at(0).toLower();
        return reason;
    }
    const QByteArray head = file.read(8);
    if (head.isEmpty())
        return QStringLiteral("the file is empty");

    // The archive classes choose by suffix; a .cbr may hold any of the three.
    const QString suffix = info.suffix().toLower();
    if (suffix == QLatin1String("cbz") || suffix == QLatin1String("zip")
        || suffix == QLatin1String("zave")) {
        if (!startsWithAny(head, { zipMagic, emptyZipMagic }))
            return QStringLiteral("not a ZIP file");
    } else if (suffix == QLatin1String("cbr") || suffix == QLatin1String("rar")) {
        if (!startsWithAny(head, { rarMagic, zipMagic, emptyZipMagic, sevenZipMagic }))
            return QStringLiteral("not a RAR file");
    } else if (!QImageReader(path).canRead()) {
        return QStringLiteral("not a picture that can be decoded");
    }
    return QString();
}

QString FileProblem::bytesForPeople(const QByteArray& name)
{
    QString result;
    QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    for (int i = 0; i < name.size();) {
        const uchar byte = uchar(name.at(i));
        // The length of a UTF-8 sequence that starts with this byte.
        const int length = byte < 0x80 ? 1 : byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : byte >= 0xc0 ? 2 : 0;
        if (length > 1 && i + length <= name.size()) {
            QTextCodec::ConverterState state(QTextCodec::ConvertInvalidToNull);
            const QString decoded = utf8->toUnicode(name.constData() + i, length, &state);
            if (state.invalidChars == 0 && state.remainingChars == 0) {
                result += decoded;
                i += length;
                continue;
            }
        }
        if (length == 1 && byte >= 0x20 && byte != 0x7f)
            result += QLatin1Char(char(byte));
        else
            result += QStringLiteral("\\x%1").arg(byte, 2, 16, QLatin1Char('0'));
        ++i;
    }
    return result;
}

bool FileProblem::isRepresentable(const QByteArray& name)
{
    return QFile::encodeName(QFile::decodeName(name)) == name;
}
