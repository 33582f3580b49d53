#ifndef READERFIXTURE_H
#define READERFIXTURE_H

#include "ComicArchive.h"
#include "ComicsReader.h"
#include "HostTrace.h"
#include "TestSupport.h"

#include <QColor>
#include <QImage>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVector>

// A reading view whose state the tests can see and set, and which records the
// page changes that reach setPage through the virtual table.
class ProbeReader : public ComicsReader
{
public:
    using ComicsReader::archive;
    using ComicsReader::ComicsReader;
    using ComicsReader::currentPage;
    using ComicsReader::event;
    using ComicsReader::maxXForZoom;
    using ComicsReader::maxYForZoom;
    using ComicsReader::pageImage;
    using ComicsReader::pages;
    using ComicsReader::panX;
    using ComicsReader::panY;
    using ComicsReader::pluginState;
    using ComicsReader::renderedPage;
    using ComicsReader::rotation;
    using ComicsReader::volume;

    void setPage(int page) override
    {
        setPageCalls << page;
        ComicsReader::setPage(page);
    }

    QList<int> setPageCalls;
};

// An archive over images in memory that logs every entry it is asked to decode.
class FakeArchive : public ComicArchive
{
public:
    FakeArchive(const QMap<QString, QImage>& entries, QStringList* decodes);
    QStringList files() override;
    QImage data(const QString& name) override;

private:
    QMap<QString, QImage> m_entries;
    QStringList* m_decodes;
};

// Records the calls into the host while it lives.
class HostRecorder : public HostObserver
{
public:
    struct Call
    {
        QString name;
        QVariantList args;
    };

    // Calls named in logged are also appended to log as "Class::method", so
    // that their order among the view's signals shows.
    explicit HostRecorder(QStringList* log = nullptr, const QStringList& logged = QStringList());
    ~HostRecorder() override;
    void hostCall(const QString& name, const QVariantList& args) override;

    // The calls of these names, in order.
    QList<Call> only(const QStringList& names) const;
    QStringList names(const QStringList& of) const;

    QList<Call> calls;

private:
    QStringList* m_log;
    QStringList m_logged;
};

// Counts the paint events that a widget gets.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget);
    int paints = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

namespace ReaderFixture {

// A book as the parser would have recorded it.
struct Comic
{
    Volume volume;
    QVector<Pagelet> pages;
};

// The records of a comic at path whose entries are entryNames, in that order.
Comic records(const QString& path, const QStringList& entryNames);

// Writes a cbz at path holding the images as PNG entries p01.png, p02.png, ...
// (or raw bytes, for an undecodable page) and stores its records in the
// library. Returns the records as stored.
Comic storeComic(const QString& path, const QList<QImage>& images);
Comic storeComicEntries(const QString& path, const QList<TestSupport::ZipEntry>& entries);

// A book and its pages set straight into the view, with a fake archive.
void loadFake(
    ProbeReader* view, const QString& bookId, const QList<QImage>& images, QStringList* decodes);

QImage solid(int width, int height, const QColor& colour);
// Left half one colour, right half another.
QImage halves(int width, int height, const QColor& left, const QColor& right);

// What the view paints, drawn over a ground of the given colour and nothing
// else: what the paint handler leaves alone keeps the ground's colour.
QImage paint(QWidget* view, const QColor& ground = Qt::red);

// Logs the view's signals into log as "name(arg,...)".
void logSignals(ComicsReader* view, QStringList* log);

} // namespace ReaderFixture

#endif
