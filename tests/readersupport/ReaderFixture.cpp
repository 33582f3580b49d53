#include "ReaderFixture.h"

#include "Library.h"

#include <QFileInfo>
#include <QPainter>

FakeArchive::FakeArchive(const QMap<QString, QImage>& entries, QStringList* decodes)
    : ComicArchive(QString())
    , m_entries(entries)
    , m_decodes(decodes)
{
}

QStringList FakeArchive::files()
{
    return m_entries.keys();
}

QImage FakeArchive::data(const QString& name)
{
    if (m_decodes)
        *m_decodes << name;
    return m_entries.value(name);
}

HostRecorder::HostRecorder(QStringList* log, const QStringList& logged)
    : m_log(log)
    , m_logged(logged)
{
    HostTrace::setObserver(this);
}

HostRecorder::~HostRecorder()
{
    HostTrace::setObserver(nullptr);
}

void HostRecorder::hostCall(const QString& name, const QVariantList& args)
{
    calls << Call { name, args };
    if (m_log && m_logged.contains(name))
        *m_log << name;
}

QList<HostRecorder::Call> HostRecorder::only(const QStringList& names) const
{
    QList<Call> result;
    for (const Call& call : calls) {
        if (names.contains(call.name))
            result << call;
    }
    return result;
}

QStringList HostRecorder::names(const QStringList& of) const
{
    QStringList result;
    for (const Call& call : only(of))
        result << call.name;
    return result;
}

PaintCounter::PaintCounter(QWidget* widget)
{
    widget->installEventFilter(this);
}

bool PaintCounter::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Paint)
        ++paints;
    return false;
}

namespace ReaderFixture {

Comic records(const QString& path, const QStringList& entryNames)
{
    Comic comic;
    comic.volume.setId(path);
    comic.volume.setPageCount(entryNames.size());
    comic.volume.setContentType(QStringLiteral("6"));
    comic.volume.setAttribute(ATTRIBUTE_TITLE, QFileInfo(path).completeBaseName());
    comic.volume.setUserID(QStringLiteral("cbz_user"));
    for (int i = 0; i < entryNames.size(); ++i) {
        Pagelet page;
        page.setId(path + QLatin1Char('/') + entryNames.at(i));
        page.setContentType(QStringLiteral("9"));
        page.setVolumeIndex(i);
        page.setBookId(path);
        page.setTitle(QStringLiteral("Page %1").arg(i + 1));
        page.setUserID(QStringLiteral("cbz_user"));
        comic.pages << page;
    }
    return comic;
}

Comic storeComicEntries(const QString& path, const QList<TestSupport::ZipEntry>& entries)
{
    QStringList names;
    for (const TestSupport::ZipEntry& entry : entries)
        names << QString::fromUtf8(entry.first);
    if (!TestSupport::writeZip(path, entries))
        qWarning("could not write %s", qPrintable(path));
    const Comic comic = records(path, names);
    QString error;
    if (!Library::storeBook(comic.volume, comic.pages, &error))
        qWarning("could not store %s: %s", qPrintable(path), qPrintable(error));
    return comic;
}

Comic storeComic(const QString& path, const QList<QImage>& images)
{
    QList<TestSupport::ZipEntry> entries;
    for (int i = 0; i < images.size(); ++i) {
        entries << TestSupport::ZipEntry(
            QStringLiteral("p%1.png").arg(i + 1, 2, 10, QLatin1Char('0')).toUtf8(),
            TestSupport::encode(images.at(i), "PNG"));
    }
    return storeComicEntries(path, entries);
}

void loadFake(
    ProbeReader* view, const QString& bookId, const QList<QImage>& images, QStringList* decodes)
{
    QStringList names;
    QMap<QString, QImage> entries;
    for (int i = 0; i < images.size(); ++i) {
        names << QStringLiteral("p%1.png").arg(i + 1);
        entries.insert(names.last(), images.at(i));
    }
    const Comic comic = records(bookId, names);
    view->volume = comic.volume;
    view->pages = comic.pages;
    view->archive = new FakeArchive(entries, decodes);
}

QImage solid(int width, int height, const QColor& colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

QImage halves(int width, int height, const QColor& left, const QColor& right)
{
    QImage image = solid(width, height, left);
    QPainter painter(&image);
    painter.fillRect(width / 2, 0, width - width / 2, height, right);
    return image;
}

QImage paint(QWidget* view, const QColor& ground)
{
    QImage image(view->size(), QImage::Format_RGB32);
    image.fill(ground);
    view->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

void logSignals(ComicsReader* view, QStringList* log)
{
    QObject::connect(view, &ComicsReader::setHeaderText,
        [log](const QString& text) { *log << QStringLiteral("setHeaderText(%1)").arg(text); });
    QObject::connect(view, &ComicsReader::setChapterIndex,
        [log](int index) { *log << QStringLiteral("setChapterIndex(%1)").arg(index); });
    QObject::connect(
        view, &ComicsReader::footerEvent, [log](const QString& title, int page, int numPages) {
            *log << QStringLiteral("footerEvent(%1,%2,%3)").arg(title).arg(page).arg(numPages);
        });
    QObject::connect(
        view, &ComicsReader::doneLoading, [log] { *log << QStringLiteral("doneLoading"); });
    QObject::connect(view, &ComicsReader::allHighlightsLoaded,
        [log] { *log << QStringLiteral("allHighlightsLoaded"); });
    QObject::connect(
        view, &ComicsReader::prevChapter, [log] { *log << QStringLiteral("prevChapter"); });
    QObject::connect(
        view, &ComicsReader::nextChapter, [log] { *log << QStringLiteral("nextChapter"); });
    QObject::connect(view, &ComicsReader::processTap, [log](TapGesture* tap) {
        *log << QStringLiteral("processTap(%1)").arg(int(tap->state()));
    });
    QObject::connect(view, &ComicsReader::processSwipe, [log](SwipeGesture* swipe) {
        *log << QStringLiteral("processSwipe(%1,%2)")
                    .arg(int(swipe->horizontalDirection()))
                    .arg(int(swipe->verticalDirection()));
    });
}

} // namespace ReaderFixture
