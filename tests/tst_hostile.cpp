// SPDX-License-Identifier: MIT
// Hostile files end to end. Each case makes its file at test time, runs tamber
// on it under GNU time, and checks the result such a file must get, the time
// it took and tamber's peak memory. tamber runs under a guard on its
// data segment, so that a regression fails a case instead of the machine:
// Qt's "out of memory" warning shows that it tried. Some decoders fail such an
// allocation quietly; under the sanitizers the guard is the allocator's own,
// which aborts with a report instead.

#include "ComicArchive.h"
#include "TestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QImageReader>
#include <QProcess>
#include <QtTest>

#if defined(__SANITIZE_ADDRESS__)
#define TAMBER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TAMBER_ASAN 1
#endif
#endif

namespace {

const qint64 guardMb = 1536;
#ifdef TAMBER_ASAN
// Shadow memory and the quarantine of freed blocks come on top. The shadow
// counts against a data segment limit, so the sanitizer's allocator keeps the
// guard instead (see the environment below).
const qint64 peakLimitMb = 2 * (ComicArchive::memoryLimit >> 20) + 512;
const qint64 dataGuardMb = 0;
#else
const qint64 peakLimitMb = (ComicArchive::memoryLimit >> 20) + 256;
const qint64 dataGuardMb = guardMb;
#endif

using TestSupport::readFile;
using TestSupport::writeFile;

QByteArray zipBytes(const QList<TestSupport::ZipEntry>& entries, const QString& scratch)
{
    return TestSupport::writeZip(scratch, entries) ? readFile(scratch) : QByteArray();
}

// The entry's uncompressed size as the central directory claims it.
QByteArray claimingSize(QByteArray zip, quint32 size)
{
    const int entry = zip.indexOf("PK\x01\x02");
    for (int i = 0; i < 4; ++i)
        zip[entry + 24 + i] = char((size >> (8 * i)) & 0xff);
    return zip;
}

// A real JPEG whose frame header claims another size; its data ends early.
QByteArray jpegClaiming(const QSize& size)
{
    QByteArray jpeg = TestSupport::encode(TestSupport::makePage(16, 16), "JPEG");
    const int frame = jpeg.indexOf("\xff\xc0");
    jpeg[frame + 5] = char(size.height() >> 8);
    jpeg[frame + 6] = char(size.height() & 0xff);
    jpeg[frame + 7] = char(size.width() >> 8);
    jpeg[frame + 8] = char(size.width() & 0xff);
    return jpeg;
}

// The texts here hold quotes but no backslashes.
QString debugLine(const QString& text)
{
    const QString escaped = QString(text).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QStringLiteral("{\"debug\":\"%1\"}").arg(escaped);
}

const QString nullImage = QStringLiteral("{\"width\":0,\"height\":0,\"null\":true}]}");

QString unreadLine(const QString& name)
{
    return debugLine(
        QStringLiteral("WHAT'S THE DEAL?  I GET LENGTH OF  -1  for filename  \"%1\"").arg(name));
}

} // namespace

class TestHostile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void hostileFile_data();
    void hostileFile();
    void bigPageCostsNoMoreThanABudgetPage_data();
    void bigPageCostsNoMoreThanABudgetPage();

private:
    // tamber's peak memory in KiB when it renders the CBZ's second page; -1
    // when it did not end by itself. shown: whether it wrote the page.
    qint64 renderPeak(const QString& book, double zoom, int orientation, bool* shown);
    // A CBZ of a small page and then the given one.
    QString secondPageBook(const QString& name, const QByteArray& page);
    // A JPEG of one colour, made by cjpeg from pixels streamed to it, so that
    // no giant image is held here; null without cjpeg.
    QByteArray blankJpeg(const QSize& size);

    QString path(const QString& name) const { return m_dir.filePath(name); }

    TestSupport::TemporaryDir m_dir;
    QByteArray m_png;
    QMap<QString, qint64> m_budgetPeaks;
};

void TestHostile::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_png = TestSupport::encode(TestSupport::makePage(30, 40), "PNG");
    // Encrypted with the traditional PKWARE method, which libzip can decrypt.
    QVERIFY(writeFile(path("app/page.png"), m_png));
    QCOMPARE(QProcess::execute("zip",
                 QStringList {
                     "-q", "-j", "-P", "secret", path("encrypted.cbz"), path("app/page.png") }),
        0);
    // A folder of its own for tamber, where stand-in extractors can sit
    // beside it; the plug-in and libtamber come from the build.
    QVERIFY(QFile::copy(TestSupport::binDir() + "/tamber", path("app/tamber")));
}

void TestHostile::hostileFile_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("bytes"); // null: made by initTestCase
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QByteArray>("extractor");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("seconds");

    // A session that imports the file, reads its cover and runs more, with
    // the stand-in extractor when one is given.
    const auto row = [](const char* name, const char* file, const QByteArray& bytes,
                         const QStringList& expected, const QByteArray& more = QByteArray(),
                         const QByteArray& extractor = QByteArray(), int seconds = 20) {
        const QByteArray at = "\"$DIR/" + QByteArray(file) + "\"\n";
        QTest::newRow(name) << QStringList { "session", "$DIR/script" } << QString(file) << bytes
                            << "import " + at + "cover " + at + more << extractor << expected
                            << seconds;
    };
    const QString scratch = path(QStringLiteral("scratch.zip"));
    const QByteArray onePage = zipBytes({ { "page.png", m_png } }, scratch);
    const QString noPages = QStringLiteral("{\"debug\":\"no comics found :  \\\"$DIR/%1\\\"\"}");
    const QStringList unread { unreadLine("page.png"), nullImage };
    const QStringList tooBig { debugLine("Image load error: \"Image too big to decode\""),
        nullImage };

    row("an entry claiming 4 GiB is not read", "claims-4GiB.cbz", claimingSize(onePage, 0xfffffff0),
        unread);
    row("an entry claiming 1 GiB is not read either", "claims-1GiB.cbz",
        claimingSize(onePage, 1u << 30), unread);
    QList<TestSupport::ZipEntry> many;
    for (int i = 0; i < 100000; ++i)
        many << TestSupport::ZipEntry(QByteArray::number(i).rightJustified(6, '0') + ".png", "");
    QTest::newRow("100,000 entries")
        << QStringList { "import", "$DIR/many.cbz" } << "many.cbz" << zipBytes(many, scratch)
        << QByteArray() << QByteArray() << QStringList { "many (100000 pages)" } << 120;
    QList<TestSupport::ZipEntry> names;
    for (const QByteArray name : { "new\nline.png", "quote\".png", "'single'.png", "-dash.png",
             "caf\xe9.png", "/absolute/page.png", "../../parent.png" })
        names << TestSupport::ZipEntry(name, m_png);
    QByteArray turnEveryPage = "open \"$DIR/names.cbz\"\npaint\n";
    for (int i = 1; i < 7; ++i)
        turnEveryPage += "next\npaint\n";
    row("names with line breaks, quotes, dashes, Latin-1, absolute and parent paths", "names.cbz",
        zipBytes(names, scratch),
        { "\"pageCount\":7", "\"bookmarkedPageId\":\"$DIR/names.cbz/quote\\\".png\"", "!{\"debug\"",
            "!{\"error\"" },
        turnEveryPage + "save\nstate\n");
    row("an encrypted entry", "encrypted.cbz", QByteArray(), unread);
    // Bytes go missing from the middle of the central directory; its end
    // record stays and points past them.
    const QByteArray threePages
        = zipBytes({ { "1.png", m_png }, { "2.png", m_png }, { "3.png", m_png } }, scratch);
    const int directory = threePages.indexOf("PK\x01\x02");
    row("a truncated central directory", "truncated.cbz",
        threePages.left(directory + 60) + threePages.right(22),
        { "{\"debug\":\"ZIP OPEN ERROR:  ", noPages.arg("truncated.cbz") });
    const QByteArray hugeJpeg = jpegClaiming(QSize(65500, 65500));
    row("a JPEG claiming 65,500 x 65,500 pixels inside a comic", "huge-jpeg.cbz",
        zipBytes({ { "page.jpg", hugeJpeg } }, scratch),
        { nullImage, debugLine("Couldn't figure out this file type!") },
        "open \"$DIR/huge-jpeg.cbz\"\npaint\n");
    row("a JPEG claiming 65,500 x 65,500 pixels as a single image", "huge.jpg", hugeJpeg, tooBig);
    const QByteArray screenGif = TestSupport::gifWithScreen(QSize(16000, 16000));
    row("a GIF whose 1-pixel frame hides a 16,000 x 16,000 screen, inside a comic",
        "screen-gif.cbz", zipBytes({ { "page.gif", screenGif } }, scratch), { nullImage });
    row("a GIF whose 1-pixel frame hides a 16,000 x 16,000 screen, as a single image", "screen.gif",
        screenGif, tooBig);
    // Qt 5's PNG reader takes a scaled size, but decodes in full before it
    // shrinks, so the page is refused unread on both Qts.
    row("a PNG over the budget, which the PNG reader cannot shrink in time", "grey.png",
        TestSupport::pngHeaderOnly(QSize(30000, 30000), 8),
        { debugLine("Image too big and scaling not supported, bailing!"), nullImage });
    row("a RAR the extractor cannot read", "unreadable.cbr",
        QByteArray("Rar!\x1a\x07\x01\x00", 8) + "garbage", { noPages.arg("unreadable.cbr") });

    const QByteArray rar = "read by the stand-in";
    const QByteArray listsOnePage = "case \"$1\" in vb) echo page.png; exit;; esac\n";
    row("an extractor printing names endlessly", "book.cbr", rar, { noPages.arg("book.cbr") },
        QByteArray(), "exec yes page.png", 60);
    row("an extractor printing an entry endlessly", "book.cbr", rar, { nullImage }, QByteArray(),
        listsOnePage + "exec cat /dev/zero", 60);
    row("an extractor dying part way through an entry", "book.cbr", rar, { nullImage },
        QByteArray(), listsOnePage + "head -c 200 \"$(dirname \"$0\")/page.png\"; kill -SEGV $$");
    // A hanging extractor is waited out once, by tst_rararchive_standins: the
    // same run serves the listing and the entries.
}

void TestHostile::hostileFile()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, script);
    QFETCH(QByteArray, extractor);
    QFETCH(QStringList, expected);
    QFETCH(int, seconds);

    const QString dir = m_dir.path();
    if (!bytes.isNull())
        QVERIFY(writeFile(path(file), bytes));
    QVERIFY(writeFile(path("script"), script.replace("$DIR", QFile::encodeName(dir))));
    arguments.replaceInStrings(QStringLiteral("$DIR"), dir);
    QString program = TestSupport::binDir() + QStringLiteral("/tamber");
    if (!extractor.isEmpty()) {
        program = path("app/tamber");
        QVERIFY(writeFile(path("app/unrar"), "#!/bin/sh\n" + extractor + '\n'));
        QVERIFY(QFile::setPermissions(
            path("app/unrar"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    QProcessEnvironment environment = TestSupport::Tamber(dir).environment;
    environment.insert("TAMBER_PLUGIN", TestSupport::binDir() + "/libcomicsreader.so");
#ifdef TAMBER_ASAN
    environment.insert("ASAN_OPTIONS",
        environment.value("ASAN_OPTIONS")
            + QStringLiteral(":allocator_may_return_null=0:max_allocation_size_mb=%1")
                  .arg(guardMb));
#endif
    QFile::remove(path("library.sqlite"));
    QFile::remove(path("report"));

    // GNU time reports how tamber ended and its peak memory in KiB, as wait4
    // gives it for the child alone; timeout kills it at the case's limit.
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(dir);
    process.start("sh",
        QStringList { "-c",
            "[ $1 -gt 0 ] && ulimit -d $(($1 * 1024)); shift; "
            "exec /usr/bin/time -o report -f '%x %M %e' timeout -s KILL \"$@\"",
            "sh", QString::number(dataGuardMb), QString::number(seconds), program }
            + arguments);
    QVERIFY(process.waitForFinished(seconds * 1000 + 30000));
    const QByteArray out = process.readAllStandardOutput();
    const QByteArray err = process.readAllStandardError();
    const QByteArray report = readFile(path("report"));
    QVERIFY2(!report.contains("signal 9"),
        qPrintable(QStringLiteral("still running after %1 s").arg(seconds)));
    QVERIFY2(!report.contains("signal"), err.constData());
    const QList<QByteArray> ended = report.trimmed().split('\n').last().split(' ');
    QVERIFY2(ended.size() == 3, report.constData());
    QVERIFY2(!err.contains("out of memory"), err.constData());
    const qint64 peakMb = ended.at(1).toLongLong() / 1024;
    QVERIFY2(peakMb <= peakLimitMb,
        qPrintable(
            QStringLiteral("peak memory %1 MB, more than %2 MB").arg(peakMb).arg(peakLimitMb)));

    // Each expected text appears in this order; one marked "!" nowhere.
    const QString trace = QString::fromUtf8(out + err);
    int from = 0;
    for (QString line : expected) {
        line.replace(QLatin1String("$DIR"), dir);
        const bool absent = line.startsWith(QLatin1Char('!'));
        line = QString::fromUtf8(TestSupport::traceLine(line.mid(absent ? 1 : 0).toUtf8()));
        if (absent) {
            QVERIFY2(!trace.contains(line), qPrintable(trace));
            continue;
        }
        const int found = trace.indexOf(line, from);
        QVERIFY2(
            found >= 0, qPrintable(QStringLiteral("no \"%1\" in order in:\n%2").arg(line, trace)));
        from = found + line.size();
    }
    qDebug("%s: %s s, peak %lld MB", QTest::currentDataTag(), ended.at(2).constData(), peakMb);
}

QString TestHostile::secondPageBook(const QString& name, const QByteArray& page)
{
    const QString book = path(name + ".cbz");
    const QByteArray entry = "2-" + name.toUtf8() + (page.startsWith("\x89PNG") ? ".png" : ".jpg");
    return TestSupport::writeZip(book, { { "1.png", m_png }, { entry, page } }) ? book : QString();
}

QByteArray TestHostile::blankJpeg(const QSize& size)
{
    QProcess cjpeg;
    cjpeg.start("sh",
        QStringList { "-c",
            "{ printf 'P6\\n%s %s\\n255\\n' $1 $2; head -c $(($1 * $2 * 3)) /dev/zero; } | cjpeg",
            "sh", QString::number(size.width()), QString::number(size.height()) });
    if (!cjpeg.waitForFinished(120000) || cjpeg.exitCode() != 0)
        return QByteArray();
    return cjpeg.readAllStandardOutput();
}

qint64 TestHostile::renderPeak(const QString& book, double zoom, int orientation, bool* shown)
{
    const QString picture = path("rendered.png");
    QFile::remove(picture);
    QFile::remove(path("report"));
    TestSupport::Tamber tamber(m_dir.path());
    tamber.environment.insert("TAMBER_PLUGIN", TestSupport::binDir() + "/libcomicsreader.so");
    if (tamber.run({ "import", book }).status != 0)
        return -1;
    QProcess process;
    process.setProcessEnvironment(tamber.environment);
    process.setWorkingDirectory(m_dir.path());
    process.start("/usr/bin/time",
        QStringList { "-o", "report", "-f", "%x %M", "timeout", "-s", "KILL", "300",
            TestSupport::binDir() + "/tamber", "render", book, "--page", "2", "--zoom",
            QString::number(zoom), "--orientation", QString::number(orientation), "-o", picture });
    if (!process.waitForFinished(330000))
        return -1;
    const QList<QByteArray> ended
        = readFile(path("report")).trimmed().split('\n').last().split(' ');
    if (ended.size() != 2 || ended.at(0) == "Command")
        return -1;
    *shown = ended.at(0) == "0" && QFileInfo(picture).size() > 0;
    return ended.at(1).toLongLong();
}

void TestHostile::bigPageCostsNoMoreThanABudgetPage_data()
{
    QTest::addColumn<QString>("book");
    QTest::addColumn<double>("zoom");
    QTest::addColumn<int>("orientation");
    QTest::addColumn<bool>("shown");

    // Pages as scanners and phones make them, each a few kilobytes in its
    // file. Bits clear: one colour, as cheap to compress as to decode.
    const QByteArray bigJpeg = blankJpeg(QSize(12000, 9000));
    const struct
    {
        const char* name;
        QByteArray page;
        bool shown;
    } pages[] = {
        { "20000 x 20000, 1 bit a pixel", TestSupport::blankPng(QSize(20000, 20000), 1), false },
        { "30000 x 30000, 1 bit a pixel", TestSupport::blankPng(QSize(30000, 30000), 1), false },
        { "12000 x 12000 grey scan", TestSupport::blankPng(QSize(12000, 12000), 8), false },
        { "12000 x 9000 JPEG photo", bigJpeg, true },
        { "6000 x 8000 JPEG", blankJpeg(QSize(6000, 8000)), true },
        { "800 x 20000 strip", TestSupport::blankPng(QSize(800, 20000), 8, 2), true },
    };
    for (const auto& page : pages) {
        const QString book = page.page.isEmpty()
            ? QString()
            : secondPageBook(
                QString(page.name).replace(' ', '-').replace(',', QString()), page.page);
        QTest::newRow(qPrintable(QStringLiteral("%1, upright").arg(page.name)))
            << book << 1.0 << 0 << page.shown;
        QTest::newRow(qPrintable(QStringLiteral("%1, landscape at zoom 3").arg(page.name)))
            << book << 3.0 << 1 << page.shown;
    }
}

// No page costs more than a page of the pixel budget at the same zoom and
// orientation: the costlier of a square one and a comic-shaped one, plus 15 %.
void TestHostile::bigPageCostsNoMoreThanABudgetPage()
{
    QFETCH(QString, book);
    QFETCH(double, zoom);
    QFETCH(int, orientation);
    QFETCH(bool, shown);

    if (book.isEmpty())
        QSKIP("no cjpeg (Debian's libjpeg-turbo-progs) to make the JPEG pages with");
    const QString key = QStringLiteral("%1/%2").arg(zoom).arg(orientation);
    if (!m_budgetPeaks.contains(key)) {
        qint64 budget = 0;
        for (const QSize& size : { QSize(4096, 4096), QSize(3300, 5080) }) {
            const QString reference = secondPageBook(
                QStringLiteral("budget-%1x%2").arg(size.width()).arg(size.height()),
                blankJpeg(size));
            bool referenceShown = false;
            budget = qMax(budget, renderPeak(reference, zoom, orientation, &referenceShown));
            QVERIFY2(referenceShown, qPrintable(reference));
        }
        m_budgetPeaks.insert(key, budget);
    }
    const qint64 budget = m_budgetPeaks.value(key);

    bool pageShown = false;
    const qint64 peak = renderPeak(book, zoom, orientation, &pageShown);
    QVERIFY2(peak > 0, "tamber render did not end by itself");
    qDebug("peak %lld MB against %lld MB for a page of the budget", peak >> 10, budget >> 10);
#ifndef TAMBER_ASAN
    // The sanitizer's shadow and quarantine make peaks incomparable; there
    // the pages are only shown or refused.
    QVERIFY2(peak <= budget * 115 / 100,
        qPrintable(QStringLiteral("peak %1 MB, more than the budget page's %2 MB plus 15 %")
                       .arg(peak >> 10)
                       .arg(budget >> 10)));
#endif
    QCOMPARE(pageShown, shown);
}

TAMBER_TEST_MAIN(TestHostile)
#include "tst_hostile.moc"
