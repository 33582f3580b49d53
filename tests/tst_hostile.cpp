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

private:
    QString path(const QString& name) const { return m_dir.filePath(name); }

    TestSupport::TemporaryDir m_dir;
    QByteArray m_png;
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
    // shrinks; Qt 4.8's takes none, and the page is refused unread. Eight bits
    // a pixel: width × height bytes, were it decoded.
    QBuffer png;
    png.setData(m_png);
    const bool pngScales = QImageReader(&png, "png").supportsOption(QImageIOHandler::ScaledSize);
    row("a PNG over the budget, which the PNG reader cannot shrink in time", "grey.png",
        TestSupport::pngHeaderOnly(QSize(30000, 30000), 8),
        pngScales ? QStringList { "{\"debug\":\"Image too big, scaling to QSize(" } + tooBig
                  : QStringList {
                      debugLine("Image too big and scaling not supported, bailing!"), nullImage });
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

TAMBER_TEST_MAIN(TestHostile)
#include "tst_hostile.moc"
