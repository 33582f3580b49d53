// SPDX-License-Identifier: MIT
// The comic parser: the records it announces for each kind of path, and covers.

#include "ComicsReaderParser.h"
#include "Device.h"
#include "PagewiseSettings.h"
#include "TestSupport.h"

#include <QtTest>

using TestSupport::Announcements;

class TestParser : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void recordsByPath_data();
    void recordsByPath();
    void cover_data();
    void cover();
    void metaObjectAsTheHostSeesIt();

private:
    TestSupport::TemporaryDir dir;
    TestSupport::TemporaryDir config;
    QByteArray png;
};

void TestParser::initTestCase()
{
    QVERIFY(dir.isValid() && config.isValid());
    // The account name set here stays out of the user's settings.
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
    png = TestSupport::encode(TestSupport::makePage(30, 40), "PNG");
    // The first page by stem is not the first entry.
    const QByteArray small = TestSupport::encode(TestSupport::makePage(20, 20), "PNG");
    const QList<TestSupport::ZipEntry> pages
        = { { "b/2.png", small }, { "a/10.png", png }, { "notes.txt", "x" } };
    QVERIFY(TestSupport::writeZip(dir.filePath("cover.cbz"), pages));
    QVERIFY(TestSupport::writeZip(dir.filePath("My Book.v2.cbz"), pages));
    QVERIFY(TestSupport::writeZip(dir.filePath("notes.cbz"), { { "a.txt", "x" } }));
    QVERIFY(TestSupport::writeRar(dir.filePath("Comic.CBR"), { { "1.png", png } }));
}

void TestParser::recordsByPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("account");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("author");
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<QString>("imageId");
    QTest::addColumn<QString>("firstPage"); // empty: the image file itself

    const auto row = [](const char* behaviour, const QString& path, const char* account,
                         const char* title, const char* author, const char* mimeType,
                         const char* imageId, const char* firstPage) {
        QTest::newRow(behaviour) << path << QString(account) << QString(title) << QString(author)
                                 << QStringLiteral("application/x-") + mimeType << QString(imageId)
                                 << QString(firstPage);
    };
    const QString sketch = "/mnt/onboard/drawings/My sketch.png";
    const char* sketchId = "_mnt_onboard_drawings_My_sketch_png";

    row("drawing without an account", sketch, "", "My sketch", "Ostra Sketch", "cbz", sketchId, "");
    row("drawing with an account", sketch, "Ann", "My sketch", "Ann", "cbz", sketchId, "");
    row("file:// drawing keeps the prefix in its ids", "file:///mnt/onboard/drawings/a.png", "Ann",
        "a", "Ann", "cbz", "file____mnt_onboard_drawings_a_png", "");
    row("the drawings folder is case-sensitive", "/mnt/onboard/Drawings/a.png", "Ann", "a",
        "Unknown Author", "cbz", "_mnt_onboard_Drawings_a_png", "");
    // Temporary paths: their image ids are not checked.
    row("upper-case CBR", dir.filePath("Comic.CBR"), "", "Comic", "Unknown Author", "cbr", "",
        "1.png");
    row("file:// comic, its title everything before the last dot",
        QStringLiteral("file://") + dir.filePath("My Book.v2.cbz"), "", "My Book.v2",
        "Unknown Author", "cbz", "", "a/10.png");
}

void TestParser::recordsByPath()
{
    QFETCH(QString, path);
    QFETCH(QString, account);
    QFETCH(QString, title);
    QFETCH(QString, author);
    QFETCH(QString, mimeType);
    QFETCH(QString, imageId);
    QFETCH(QString, firstPage);

    PagewiseSettings(Device()).setFacebookName(account);
    ComicsReaderParser parser;
    Announcements announced(&parser);
    parser.parse(path);
    PagewiseSettings(Device()).setFacebookName(QString());

    const Volume volume = announced.volumes.value(0);
    QCOMPARE(volume.getId(), path);
    QCOMPARE(volume.attribute(ATTRIBUTE_TITLE).toString(), title);
    QCOMPARE(volume.attribute(ATTRIBUTE_ATTRIBUTION).toString(), author);
    QCOMPARE(volume.attribute(ATTRIBUTE_MIME_TYPE).toString(), mimeType);
    if (!imageId.isEmpty())
        QCOMPARE(volume.getImageId(), imageId);
    if (firstPage.isEmpty())
        firstPage = QString(path).remove(QStringLiteral("file://"));
    QCOMPARE(announced.pages.value(0).getId(), path + QLatin1Char('/') + firstPage);
    QCOMPARE(announced.pages.value(0).getBookId(), path);
}

void TestParser::cover_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QSize>("size");

    const QString comic = dir.filePath("cover.cbz");
    QTest::newRow("first page by stem") << comic << QSize(30, 40);
    QTest::newRow("book without pages: null") << dir.filePath("notes.cbz") << QSize();
    QTest::newRow("neither comic nor image: null") << dir.filePath("a.txt") << QSize();
}

void TestParser::cover()
{
    QFETCH(QString, id);
    QFETCH(QSize, size);
    Volume volume;
    volume.setId(id);

    ComicsReaderParser parser;
    Announcements announced(&parser);
    parser.parseCoverImage(volume);

    QCOMPARE(announced.order, QString("c"));
    QCOMPARE(announced.volumes.first().getId(), id);
    QCOMPARE(announced.cover.isNull() ? QSize() : announced.cover.size(), size);
}

void TestParser::metaObjectAsTheHostSeesIt()
{
    // The host connects and invokes by signature, so names and order are the
    // interface; every parse above connects to them so.
    const QMetaObject& interface = ParserInterface::staticMetaObject;
    QCOMPARE(int(interface.d.data[0]), TestSupport::mocRevision());
    QCOMPARE(ComicsReaderParser::staticMetaObject.superClass(), &interface);
    QCOMPARE(ComicsReaderParser::staticMetaObject.methodCount(), interface.methodCount());
    QCOMPARE(TestSupport::methodsOf(interface),
        QStringList({ "signal volumeParsed(Volume&,bool,bool) volume,hasRights,isLoan",
            "signal pageletParsed(Pagelet&) pagelet",
            "signal imageParsed(Volume,QImage) volume,image" }));
}

TAMBER_TEST_MAIN(TestParser)
#include "tst_parser.moc"
