// SPDX-License-Identifier: MIT
// Writes the fuzz targets' seed corpora into OUT/<target>/: small valid inputs
// of every kind the targets take, each made here.
//
//   fuzz_seeds OUT

#include "TestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QImageWriter>
#include <QProcess>

#include <cstdio>
#include <zip.h>

namespace {

QString outDir;

bool writeSeed(const QString& target, const QString& name, const QByteArray& bytes)
{
    const QString dir = outDir + QLatin1Char('/') + target;
    QDir().mkpath(dir);
    QFile file(dir + QLatin1Char('/') + name);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        && file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A 1 × 1 GIF: Qt decodes GIF but cannot write it.
const QByteArray gif("GIF89a\x01\x00\x01\x00\x80\x00\x00\xff\xff\xff\x00\x00\x00"
                     "!\xf9\x04\x01\x00\x00\x00\x00,\x00\x00\x00\x00\x01\x00\x01\x00\x00"
                     "\x02\x02\x44\x01\x00;",
    43);

const QByteArray svg("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"8\" height=\"12\">"
                     "<rect x=\"1\" y=\"1\" width=\"6\" height=\"10\" fill=\"#333\"/>"
                     "<text x=\"1\" y=\"9\" font-size=\"6\">1</text></svg>");

// One small page in every format Qt reads, by format name.
QList<QPair<QByteArray, QByteArray>> images()
{
    QList<QPair<QByteArray, QByteArray>> result;
    const QImage page = TestSupport::makePage(8, 12);
    for (const QByteArray& format : QImageWriter::supportedImageFormats()) {
        if (QImageReader::supportedImageFormats().contains(format)) {
            const QByteArray bytes = TestSupport::encode(page, format.constData());
            if (!bytes.isEmpty())
                result << qMakePair(format, bytes);
        }
    }
    result << qMakePair(QByteArray("gif"), gif) << qMakePair(QByteArray("svg"), svg);
    return result;
}

// A ZIP of these entries; compression and encryption by entry, as libzip offers.
struct Entry
{
    QByteArray name;
    QByteArray data;
    zip_int32_t method = ZIP_CM_DEFLATE;
    zip_uint16_t encryption = ZIP_EM_NONE;
};

QByteArray zipOf(const QList<Entry>& entries)
{
    const QString path = outDir + QStringLiteral("/scratch.zip");
    zip_t* archive
        = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    if (!archive)
        return QByteArray();
    for (const Entry& entry : entries) {
        zip_int64_t index;
        if (entry.name.endsWith('/')) {
            index = zip_dir_add(archive, entry.name.constData(), ZIP_FL_ENC_RAW);
        } else {
            zip_source_t* source = zip_source_buffer(
                archive, entry.data.constData(), zip_uint64_t(entry.data.size()), 0);
            index = zip_file_add(archive, entry.name.constData(), source, ZIP_FL_ENC_RAW);
            if (index >= 0 && zip_compression_method_supported(entry.method, 1))
                zip_set_file_compression(archive, zip_uint64_t(index), entry.method, 0);
            if (index >= 0 && entry.encryption != ZIP_EM_NONE
                && zip_encryption_method_supported(entry.encryption, 1))
                zip_file_set_encryption(archive, zip_uint64_t(index), entry.encryption, "secret");
        }
        if (index < 0) {
            zip_discard(archive);
            return QByteArray();
        }
    }
    if (zip_close(archive) != 0) {
        std::fprintf(stderr, "fuzz_seeds: %s\n", zip_strerror(archive));
        zip_discard(archive);
        return QByteArray();
    }
    const QByteArray bytes = readFile(path);
    QFile::remove(path);
    return bytes;
}

void zipSeeds(const QList<QPair<QByteArray, QByteArray>>& pages)
{
    QList<Entry> all { { "Chapter 1/", {} }, { "notes.txt", "not a page" } };
    QList<Entry> stored;
    for (const auto& page : pages) {
        all << Entry { "Chapter 1/01." + page.first, page.second };
        stored << Entry { "p." + page.first, page.second, ZIP_CM_STORE };
    }
    writeSeed("fuzz_ziparchive", "pages.cbz", zipOf(all));
    writeSeed("fuzz_ziparchive", "stored.cbz", zipOf(stored));
    const QByteArray png = pages.first().second;
    writeSeed("fuzz_ziparchive", "bzip2.cbz", zipOf({ { "a.png", png, ZIP_CM_BZIP2 } }));
    writeSeed(
        "fuzz_ziparchive", "aes.cbz", zipOf({ { "a.png", png, ZIP_CM_DEFLATE, ZIP_EM_AES_256 } }));
    writeSeed("fuzz_ziparchive", "pkware.cbz",
        zipOf({ { "a.png", png, ZIP_CM_DEFLATE, ZIP_EM_TRAD_PKWARE } }));
    writeSeed("fuzz_ziparchive", "names.cbz",
        zipOf({ { "/abs.png", png }, { "../up.png", png }, { "caf\xe9.png", png },
            { "-dash.png", png }, { "quote\".png", png }, { "line\nbreak.png", png } }));
    writeSeed("fuzz_ziparchive", "empty.cbz", QByteArray("PK\x05\x06", 4) + QByteArray(18, '\0'));
}

void nameSeeds()
{
    const QList<QByteArray> lists {
        "Chapter 1/001.jpg\nChapter 1/002.jpg\nChapter 2/001.jpg\nChapter 2/010.jpg\n",
        "10.jpg\n9.jpg\nZ.png\na.png\n.hidden.png\nscanjpg\nnotes.txt\n",
        "__MACOSX/._01.png\n01.png\n01.png\na/01.png\nb/01.gif\n",
        "a.b.c.png\na.png\na..png\n.png\n..png\n/abs/01.PNG\n../up/02.Jpeg\n",
        "Caf\xc3\xa9/01.png\n\xe3\x83\x9a\xe3\x83\xbc\xe3\x82\xb8.png\ncaf\xe9.svg\n",
    };
    for (int i = 0; i < lists.size(); ++i)
        writeSeed("fuzz_pagenames", QStringLiteral("names%1.txt").arg(i), lists.at(i));
}

void imageSeeds(const QList<QPair<QByteArray, QByteArray>>& pages)
{
    // The single-image target's first byte picks the suffix from this list.
    const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    for (const auto& page : pages) {
        const int index = formats.indexOf(page.first);
        if (index >= 0) {
            writeSeed("fuzz_nullarchive", QString::fromLatin1("image." + page.first),
                char(index) + page.second);
        }
        writeSeed("fuzz_bytearrayarchive", QString::fromLatin1("image." + page.first), page.second);
    }
}

void rarSeeds(const QList<QPair<QByteArray, QByteArray>>& pages)
{
    const QString path = outDir + QStringLiteral("/scratch.rar");
    const auto rarOf = [&path](const QList<TestSupport::ZipEntry>& entries) {
        TestSupport::writeRar(path, entries);
        const QByteArray bytes = readFile(path);
        QFile::remove(path);
        return bytes;
    };
    const QByteArray png = pages.first().second;
    writeSeed("fuzz_extractor", "pages.cbr",
        rarOf({ { "01.png", png }, { "Chapter 1/02.png", png }, { "notes.txt", "text" } }));
    writeSeed("fuzz_extractor", "names.cbr",
        rarOf({ { "-01.png", png }, { "Caf\xc3\xa9/01.png", png }, { "01.png", png } }));
    writeSeed("fuzz_extractor", "empty.cbr", rarOf({}));
}

void scriptSeeds()
{
    const QDir sessions(QStringLiteral(TAMBER_TESTS_SOURCE_DIR "/sessions"));
    for (const QString& name : sessions.entryList({ QStringLiteral("*.script") }, QDir::Files))
        writeSeed("fuzz_sessionscript", name, readFile(sessions.filePath(name)));
    writeSeed("fuzz_sessionscript", "quoting.script",
        "# comment\r\n  \t\nopen \"a \\\"b\\\" \\\\c.cbz\" 1\r\nimport \"\"\n"
        "dogear remove-record \"x\" \"unterminated\nstate\n");
}

} // namespace

// Two 2 × 2 WebP pictures made by cwebp, one lossless and one lossy: the seeds
// are written without libwebp's encoder.
void webpSeeds()
{
    writeSeed("fuzz_webp", "lossless.webp",
        QByteArray("RIFF\x2c\x00\x00\x00WEBPVP8L\x1f\x00\x00\x00\x2f\x01\x40\x00\x00\x1f"
                   "\x20\x10\x48\xde\x1f\x3a\x8d\xf9\x17\x10\x14\xfc\x1f\xdd\xfc\x47\x64"
                   "\x0f\xe0\x06\x0c\x11\xfd\x0f\x01\x00",
            52));
    writeSeed("fuzz_webp", "lossy.webp",
        QByteArray("RIFF\x36\x00\x00\x00WEBPVP8 \x2a\x00\x00\x00\x90\x01\x00\x9d\x01\x2a"
                   "\x02\x00\x02\x00\x02\xc0\x4c\x25\xa4\x00\x02\xe7\x45\xac\x00\x00\xfe"
                   "\xe2\x9e\xf4\xb4\xa5\xd5\xfd\x54\xc0\x46\x03\xc1\x8c\x2b\x50\x00\x00"
                   "\x00\x00",
            62));
}

// Small AVIF and JPEG XL pictures, lossless and lossy, made by avifenc and
// cjxl, which scripts/setup installs with the libraries.
void avifJxlSeeds(const QImage& page)
{
    const QString png = outDir + "/page.png";
    page.save(png);
    const struct
    {
        const char* target;
        const char* name;
        QStringList command;
    } seeds[] = { { "fuzz_avif", "lossless.avif", { "avifenc", "-l", "-s", "10" } },
        { "fuzz_avif", "lossy.avif", { "avifenc", "-s", "10", "-y", "420" } },
        { "fuzz_jxl", "lossless.jxl", { "cjxl", "--quiet", "-d", "0" } },
        { "fuzz_jxl", "lossy.jxl", { "cjxl", "--quiet", "-d", "2" } } };
    for (const auto& seed : seeds) {
        const QString output = outDir + "/made";
        QProcess tool;
        tool.start(seed.command.first(), seed.command.mid(1) << png << output);
        tool.waitForFinished();
        QFile file(output);
        if (!file.open(QIODevice::ReadOnly))
            std::fprintf(stderr, "fuzz_seeds: %s made nothing\n", qPrintable(seed.command.first()));
        writeSeed(seed.target, seed.name, file.readAll());
        file.remove();
    }
    QFile::remove(png);
}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fputs("usage: fuzz_seeds OUT\n", stderr);
        return 2;
    }
    outDir = QString::fromLocal8Bit(argv[1]);
    if (!QDir().mkpath(outDir)) {
        std::fprintf(stderr, "fuzz_seeds: cannot make %s\n", argv[1]);
        return 1;
    }
    const auto pages = images();
    zipSeeds(pages);
    nameSeeds();
    imageSeeds(pages);
    rarSeeds(pages);
    scriptSeeds();
    webpSeeds();
    avifJxlSeeds(TestSupport::drawing(24, 32));
    return 0;
}
