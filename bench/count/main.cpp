// SPDX-License-Identifier: MIT
// The work whose instructions scripts/bench-instructions counts under QEMU:
// page turns in the reading view, or the baseline steps of showing the same
// pages, after the same setup; or decodes of one page file. A run that only
// sets up, or only loads the file, gives what the counts of the others have
// in common.
//
//   bench-count --workload=DIR --work=setup|turn|steps [--pages=N]
//   bench-count --workload=DIR --work=source --out=DIR
//   bench-count --work=load|decode --image=FILE [--pages=N]
//   bench-count --work=book --book=FILE [--page=N [--reads=K]]
//
// Setup: the comic imported, a view of the screen's size opened on page 1
// and painted, and the comic opened for the steps, page 1 shown by them
// too. Then N pages from page 2 on, each turned to and painted, or each
// inflated, decoded, scaled and drawn.
//
// Source writes the comic's page 1 as stored (page.jpg) and decoded
// (page.png), from which the script makes the same page in other formats.
// Load reads FILE into memory; decode then decodes it N times through
// QImageReader, the format named by FILE's suffix.
//
// Book lists FILE's pages as the parser does, and with --page=N (from 1)
// reads and decodes the Nth page by name K times (once unless given), as a
// page turn does: through the extractor for any book but a ZIP, which is
// read in-process. A run that reads the page once more than another counts
// one page turn after the same start.

#include "BaselineSteps.h"
#include "BenchEnvironment.h"
#include "BenchLibrary.h"
#include "ComicPageNames.h"
#include "ComicZipArchive.h"
#include "ComicsReader.h"
#include "ComicsReaderParser.h"
#include "QtCompat.h"
#include "RarArchive.h"
#include "ReaderWindow.h"
#include "Workload.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

const QSize screen(1072, 1448);

QString option(const QStringList& arguments, const QString& name)
{
    const QString prefix = QStringLiteral("--") + name + QLatin1Char('=');
    for (const QString& argument : arguments) {
        if (argument.startsWith(prefix))
            return argument.mid(prefix.size());
    }
    return QString();
}

// Reads the file, and for --work=decode decodes it pages times.
int decodeImage(const QString& path, bool decode, int pages)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "bench-count: cannot read %s\n", qPrintable(path));
        return 2;
    }
    QByteArray bytes = file.readAll();
    const QByteArray format = QFileInfo(path).suffix().toLatin1();
    if (!QImageReader::supportedImageFormats().contains(format)) {
        std::fprintf(stderr, "bench-count: no %s image plug-in\n", format.constData());
        return 3;
    }
    for (int page = 0; page < pages && decode; ++page) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        if (QImageReader(&buffer, format).read().isNull()) {
            std::fprintf(stderr, "bench-count: %s did not decode\n", qPrintable(path));
            return 1;
        }
    }
    std::printf("%s %d\n", decode ? "decode" : "load", decode ? pages : 0);
    return 0;
}

// The comic's page 1 as stored and decoded, in dir.
int writeSource(const Workload& workload, const QString& dir)
{
    QDir().mkpath(dir);
    BaselineSteps steps(workload.comic(), screen);
    const QByteArray bytes = steps.inflate(Workload::pageName(0));
    QFile jpeg(dir + QStringLiteral("/page.jpg"));
    const bool written = jpeg.open(QIODevice::WriteOnly) && jpeg.write(bytes) == bytes.size();
    jpeg.close();
    if (!written
        || !BaselineSteps::decode(bytes)
                .convertToFormat(QImage::Format_RGB32)
                .save(dir + QStringLiteral("/page.png"), "png")) {
        std::fprintf(stderr, "bench-count: cannot write page 1 in %s\n", qPrintable(dir));
        return 1;
    }
    return 0;
}

// Lists the book, and reads page (from 1) reads times when given.
int readBook(const QString& path, int page, int reads)
{
    std::unique_ptr<ComicArchive> book;
    if (path.endsWith(QLatin1String(".cbz"), Qt::CaseInsensitive))
        book.reset(new ComicZipArchive(path));
    else
        book.reset(new RarArchive(path));
    // The pages in reading order, as the parser takes them.
    QStringList names;
    for (const QString& name : book->files()) {
        if (ComicsReaderParser::isSupportedImage(name))
            names << name;
    }
    names.removeDuplicates();
    std::stable_sort(names.begin(), names.end(), pageNameLessThan);
    if (names.isEmpty() || page > names.size()) {
        std::fprintf(stderr, "bench-count: %s has %d pages\n", qPrintable(path), int(names.size()));
        return 2;
    }
    for (int read = 0; read < reads && page > 0; ++read) {
        if (book->data(names.at(page - 1)).isNull()) {
            std::fprintf(
                stderr, "bench-count: page %d of %s did not decode\n", page, qPrintable(path));
            return 1;
        }
    }
    std::printf("book %d of %d\n", page, int(names.size()));
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    BenchEnvironment::prepare();
    const std::unique_ptr<QApplication> application = BenchEnvironment::makeApplication(argc, argv);
    if (!application)
        return 2;
    const QStringList arguments = QCoreApplication::arguments();
    const QString work = option(arguments, QStringLiteral("work"));
    const int pages = qMax(1, option(arguments, QStringLiteral("pages")).toInt());
    if (work == QLatin1String("load") || work == QLatin1String("decode"))
        return decodeImage(
            option(arguments, QStringLiteral("image")), work == QLatin1String("decode"), pages);
    if (work == QLatin1String("book"))
        return readBook(option(arguments, QStringLiteral("book")),
            option(arguments, QStringLiteral("page")).toInt(),
            qMax(1, option(arguments, QStringLiteral("reads")).toInt()));
    Workload workload;
    QString error;
    if (!Workload::load(option(arguments, QStringLiteral("workload")), &workload, &error)) {
        std::fprintf(stderr, "bench-count: %s\n", qPrintable(error));
        return 2;
    }
    if (work == QLatin1String("source"))
        return writeSource(workload, option(arguments, QStringLiteral("out")));
    if (work != QLatin1String("setup") && work != QLatin1String("turn")
        && work != QLatin1String("steps")) {
        std::fprintf(stderr, "bench-count: --work=setup|turn|steps|source|load|decode|book\n");
        return 2;
    }
    if (pages >= workload.comicPages) {
        std::fprintf(stderr, "bench-count: the comic has %d pages\n", workload.comicPages);
        return 2;
    }

    BenchLibrary library;
    const Volume book = library.import(workload.comic());
    if (book.getId().isEmpty()) {
        std::fprintf(stderr, "bench-count: the comic could not be imported\n");
        return 1;
    }
    ReaderWindow window(screen);
    window.open(book);
    BaselineSteps steps(workload.comic(), screen);
    if (window.renderedPage() != 0 || !steps.show(Workload::pageName(0))) {
        std::fprintf(stderr, "bench-count: page 1 was not shown\n");
        return 1;
    }

    for (int page = 1; page <= pages && work != QLatin1String("setup"); ++page) {
        if (work == QLatin1String("turn")) {
            window.view()->goToNextPage();
            window.paint();
            if (window.renderedPage() != page) {
                std::fprintf(stderr, "bench-count: the view did not paint page %d\n", page + 1);
                return 1;
            }
        } else if (!steps.show(Workload::pageName(page))) {
            std::fprintf(stderr, "bench-count: page %d did not decode\n", page + 1);
            return 1;
        }
    }
    std::printf("%s %d\n", qPrintable(work), work == QLatin1String("setup") ? 0 : pages);
    return 0;
}
