// SPDX-License-Identifier: MIT
// The library under load. The same operations run against a library of one
// book and against one of 1,000 books with 200,000 page records; the host's
// stores should cost the same in both, so every figure but list's should
// match. The books are stored records; the one that is opened is a real comic
// of 200 pages, imported through the plug-in.
//
//   bench_load [benchmark flags]

#include "ComicsReaderPlugin.h"
#include "Display.h"
#include "GestureRegistration.h"
#include "Library.h"
#include "ParserHost.h"
#include "PluginState.h"
#include "SessionView.h"
#include "TestSupport.h"

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QWidget>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <memory>
#include <zip.h>

namespace {

const int pagesPerBook = 200;
const QSize screen(1072, 1448);

struct Workload
{
    TestSupport::TemporaryDir dir;
    QString comic;
    std::map<int, QString> libraries; // by number of books
    ComicsReaderPlugin plugin;
};

Workload* workload = nullptr;

QByteArray jpegPage(int number)
{
    QImage page(600, 900, QImage::Format_RGB32);
    page.fill(QColor(240, 238, 228).rgb());
    QPainter painter(&page);
    painter.setPen(QPen(Qt::black, 6));
    painter.drawRect(page.rect().adjusted(30, 30, -30, -30));
    painter.setFont(QFont(QStringLiteral("Sans"), 120));
    painter.drawText(page.rect(), Qt::AlignCenter, QString::number(number));
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    page.save(&buffer, "JPEG", 85);
    return bytes;
}

bool writeComic(const QString& path)
{
    zip_t* archive
        = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    if (!archive)
        return false;
    QList<QByteArray> pages; // libzip reads them when the archive closes
    for (int i = 0; i < pagesPerBook; ++i) {
        pages << jpegPage(i + 1);
        const QByteArray name = QByteArray::number(i + 1000) + ".jpg";
        zip_source_t* source = zip_source_buffer(
            archive, pages.last().constData(), zip_uint64_t(pages.last().size()), 0);
        if (!source || zip_file_add(archive, name.constData(), source, 0) < 0) {
            zip_source_free(source);
            zip_discard(archive);
            return false;
        }
    }
    return zip_close(archive) == 0;
}

// A stored book as the parser would announce it, with its page records.
void storeRecords(int number)
{
    const QString id
        = QStringLiteral("/mnt/onboard/comics/Book %1.cbz").arg(number, 4, 10, QLatin1Char('0'));
    Volume volume;
    volume.setId(id);
    volume.setPageCount(pagesPerBook);
    volume.setContentType(QStringLiteral("6"));
    volume.setAttribute(ATTRIBUTE_TITLE, QStringLiteral("Book %1").arg(number));
    volume.setAttribute(ATTRIBUTE_ATTRIBUTION, QStringLiteral("Unknown Author"));
    volume.setAttribute(ATTRIBUTE_MIME_TYPE, QStringLiteral("application/x-cbz"));
    volume.setUserID(QStringLiteral("cbz_user"));
    QVector<Pagelet> pages;
    for (int i = 0; i < pagesPerBook; ++i) {
        Pagelet page;
        page.setId(QStringLiteral("%1/%2.jpg").arg(id).arg(i + 1000));
        page.setContentType(QStringLiteral("9"));
        page.setVolumeIndex(i);
        page.setBookId(id);
        page.setTitle(QStringLiteral("Page %1").arg(i + 1));
        page.setAttribute(ATTRIBUTE_MIME_TYPE, QStringLiteral("application/x-cbz"));
        page.setUserID(QStringLiteral("cbz_user"));
        pages << page;
    }
    Library::storeBook(volume, pages);
}

bool makeLibrary(int books)
{
    const QString path = workload->dir.filePath(QStringLiteral("library-%1.sqlite").arg(books));
    if (!Library::open(path))
        return false;
    ParserHost host(&workload->plugin);
    const bool imported = !host.importFile(workload->comic).isEmpty();
    for (int i = 1; i < books; ++i)
        storeRecords(i);
    Library::close();
    workload->libraries[books] = path;
    return imported;
}

// Opens the library of that many books for one benchmark.
class OpenLibrary
{
public:
    OpenLibrary(benchmark::State& state)
    {
        if (!Library::open(workload->libraries.at(int(state.range(0)))))
            state.SkipWithError("the library does not open");
        state.counters["books"] = double(Library::books().size());
    }
    ~OpenLibrary() { Library::close(); }
};

// A reading view with the comic open at its first page, painted.
struct OpenBook
{
    PluginState pluginState;
    SessionView view { &workload->plugin, &pluginState, screen };

    bool open()
    {
        return view.open()
            && QMetaObject::invokeMethod(view.view(), "renderVolume", Qt::DirectConnection,
                Q_ARG(Volume, Library::book(workload->comic)),
                Q_ARG(ReadingNavigationType, ReadingNavigationDefault))
            && (view.paint(), true);
    }
};

// tamber list: every book, from the store.
void list(benchmark::State& state)
{
    OpenLibrary library(state);
    for (auto _ : state) {
        const QList<Volume> books = Library::books();
        benchmark::DoNotOptimize(books.size());
    }
}

// tamber session "open": the stored book, a new view, its pages and dog ears
// from the stores, and the first page decoded and painted.
void open(benchmark::State& state)
{
    OpenLibrary library(state);
    OpenBook book;
    for (auto _ : state) {
        if (!book.open())
            state.SkipWithError("the book does not open");
    }
}

// tamber session "next" and "paint": the next page decoded and painted.
void pageTurn(benchmark::State& state)
{
    OpenLibrary library(state);
    OpenBook book;
    if (!book.open())
        state.SkipWithError("the book does not open");
    int page = 0;
    for (auto _ : state) {
        if (++page == pagesPerBook) {
            state.PauseTiming();
            QMetaObject::invokeMethod(book.view.view(), "goToPage", Q_ARG(int, 1));
            book.view.paint();
            page = 0;
            state.ResumeTiming();
            continue;
        }
        QMetaObject::invokeMethod(book.view.view(), "goToNextPage");
        book.view.paint();
    }
}

// tamber session "save": the reading position and status, two store writes.
void save(benchmark::State& state)
{
    OpenLibrary library(state);
    OpenBook book;
    if (!book.open())
        state.SkipWithError("the book does not open");
    for (auto _ : state) {
        QMetaObject::invokeMethod(
            book.view.view(), "saveBookmark", Q_ARG(bool, false), Q_ARG(Volume*, nullptr));
    }
}

BENCHMARK(list)->Arg(1)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(open)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(pageTurn)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(save)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    if (!Display::prepare(QStringLiteral("bench_load"), false))
        return 2;
    const std::unique_ptr<QApplication> app = Display::makeApplication(argc, argv);
    registerGestureRecognizers();
    benchmark::Initialize(&argc, argv);

    Workload work;
    workload = &work;
    work.comic = work.dir.filePath(QStringLiteral("Comic.cbz"));
    std::fprintf(stderr, "bench_load: writing the comic and the libraries...\n");
    if (!writeComic(work.comic) || !makeLibrary(1) || !makeLibrary(1000)) {
        std::fprintf(stderr, "bench_load: could not make the workload\n");
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
