#include "ComicZipArchive.h"
#include "TestSupport.h"

#include <QtTest>

#include <zip.h>

using TestSupport::MessageLog;

namespace {

QString readLine(qint64 count, const QString& name)
{
    return TestSupport::debugLine(
        QStringLiteral("WHAT'S THE DEAL?  I GET LENGTH OF  %1  for filename  \"%2\"")
            .arg(count)
            .arg(name));
}

} // namespace

class TestZipArchive : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void listsAndDecodesEveryEntry();
    void failedReads_data();
    void failedReads();

private:
    TestSupport::TemporaryDir dir;
    QByteArray png;
};

void TestZipArchive::initTestCase()
{
    QVERIFY(dir.isValid());
    png = TestSupport::encode(TestSupport::makePage(30, 40), "PNG");
}

void TestZipArchive::listsAndDecodesEveryEntry()
{
    // Names in any encoding come back as their bytes, each as one Latin-1
    // character, so each opens again: libzip converts none, not even a name
    // it takes to be in a code page.
    const QList<QByteArray> names { "Chapter 1/", "Chapter 1/001.png", "notes.txt",
        "Caf\xc3\xa9/01.png", "\xe3\x83\x9a\xe3\x83\xbc\xe3\x82\xb8/02.png", "caf\xe9/03.png",
        "caf\x82 1.png" };
    QList<TestSupport::ZipEntry> entries;
    for (const QByteArray& name : names)
        entries << TestSupport::ZipEntry(name, name.endsWith(".png") ? png : QByteArray());
    const QString path = dir.filePath(QStringLiteral("book.cbz"));
    QVERIFY(TestSupport::writeZip(path, entries));

    ComicZipArchive archive(path);
    const QStringList listed = archive.files();
    QCOMPARE(listed.join(QStringLiteral("|")).toLatin1(), TestSupport::joined(names, '|'));
    for (const QString& name : listed) {
        if (name.endsWith(QLatin1String(".png")))
            QCOMPARE(archive.data(name).size(), QSize(30, 40));
    }
}

void TestZipArchive::failedReads_data()
{
    QTest::addColumn<QByteArray>("zip");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("lines");

    const QString path = dir.filePath(QStringLiteral("fixture.cbz"));
    QVERIFY(TestSupport::writeZip(path, { { "page.png", png }, { "empty.png", "" } }));
    const QByteArray good = TestSupport::readFile(path);
    const QString noZip
        = TestSupport::debugLine(QStringLiteral("ZIP OPEN ERROR:  %1").arg(ZIP_ER_NOZIP));

    QTest::newRow("not a ZIP") << QByteArray("Rar!\x1a\x07\x01\x00", 8) << "page.png"
                               << QStringList { noZip, readLine(-1, "page.png") };
    QTest::newRow("truncated ZIP") << good.left(good.size() / 2) << "page.png"
                                   << QStringList { noZip, readLine(-1, "page.png") };
    QTest::newRow("empty file: an archive without entries")
        << QByteArray() << "page.png" << QStringList(readLine(-1, "page.png"));
    QTest::newRow("unknown name") << good << "other.png" << QStringList(readLine(-1, "other.png"));
    QTest::newRow("lookup is case-sensitive")
        << good << "PAGE.png" << QStringList(readLine(-1, "PAGE.png"));
    QTest::newRow("empty entry") << good << "empty.png" << QStringList(readLine(0, "empty.png"));

    // The directory claims a size no QByteArray can hold.
    QByteArray lying = good;
    lying.replace(lying.indexOf("PK\x01\x02") + 24, 4, "\xff\xff\xff\xf0");
    QTest::newRow("size too large to hold")
        << lying << "page.png" << QStringList(readLine(-1, "page.png"));

    if (zip_encryption_method_supported(ZIP_EM_AES_256, 1)) {
        zip_t* archive = zip_open(QFile::encodeName(path).constData(), 0, nullptr);
        QVERIFY(archive && zip_file_set_encryption(archive, 0, ZIP_EM_AES_256, "secret") == 0);
        QCOMPARE(zip_close(archive), 0);
        QTest::newRow("encrypted entry")
            << TestSupport::readFile(path) << "page.png" << QStringList(readLine(-1, "page.png"));
    }
}

void TestZipArchive::failedReads()
{
    QFETCH(QByteArray, zip);
    QFETCH(QString, name);
    QFETCH(QStringList, lines);

    const QString path = dir.filePath(QStringLiteral("case.cbz"));
    QVERIFY(TestSupport::writeFile(path, zip));

    MessageLog log;
    ComicZipArchive archive(path);
    QVERIFY(archive.data(name).isNull());
    QCOMPARE(log.lines(), lines);
}

QTEST_MAIN(TestZipArchive)
#include "tst_ziparchive.moc"
