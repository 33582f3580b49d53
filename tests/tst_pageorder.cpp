// SPDX-License-Identifier: MIT
#include "ComicPageNames.h"
#include "TestSupport.h"

#include <QtTest>

class TestPageOrder : public QObject
{
    Q_OBJECT

private slots:
    void stemOrder_data();
    void stemOrder();
    void pageList_data();
    void pageList();

private:
    TestSupport::TemporaryDir dir;
};

void TestPageOrder::stemOrder_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<bool>("ordered"); // false: equal stems, neither comes first
    const auto row
        = [](const char* behaviour, const char* first, const char* second, bool ordered) {
              QTest::newRow(behaviour) << QString(first) << QString(second) << ordered;
          };
    row("digits compare as characters", "page10.jpg", "page2.jpg", true);
    row("zero padding sorts as numbers", "009.jpg", "010.jpg", true);
    row("upper case before lower case", "Z.jpg", "a.jpg", true);
    row("digits before letters", "b/2.jpg", "Cover.JPG", true);
    row("directories are ignored", "ch2/01.jpg", "ch1/02.jpg", true);
    row("a proper prefix comes first", "page.jpg", "page1.jpg", true);
    row("a leading dot gives the empty stem, first", ".hidden.png", "0.png", true);
    row("a name without a dot is its own stem", "scan.jpg", "scanjpg", true);
    row("everything after the first dot is ignored", "01.b.png", "01.a.jpg", false);
    row("a decimal point ends the stem", "1.5.jpg", "1.jpg", false);
}

void TestPageOrder::stemOrder()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(bool, ordered);
    QCOMPARE(pageNameLessThan(first, second), ordered);
    QVERIFY(!pageNameLessThan(second, first));
}

void TestPageOrder::pageList_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QStringList>("pages");
    const auto row = [](const char* behaviour, const char* suffix, const QStringList& entries,
                         const QStringList& pages) {
        QTest::newRow(behaviour) << QString(suffix) << entries << pages;
    };
    const QStringList example { "b/2.jpg", "a/10.jpg", "Cover.JPG", "a/1.png", "notes.txt",
        "__MACOSX/a/._1.png" };
    const QStringList exampleOrder { "a/1.png", "a/10.jpg", "b/2.jpg", "Cover.JPG" };

    row("worked example", "cbz", example, exampleOrder);
    row("RAR pages order the same way", "cbr", example, exampleOrder);
    row("upper case comes first in a listing too", "cbz", { "a.png", "Z.png" },
        { "Z.png", "a.png" });
    row("__MACOSX folders are dropped at any depth", "cbz", { "d/__MACOSX/x.png", "1.png" },
        { "1.png" });
    row("__macosx in lower case is kept", "cbz", { "__macosx/x.png" }, { "__macosx/x.png" });
    row("a bare format ending is an image", "cbz", { "notes.txt", "scanjpg" }, { "scanjpg" });
    row("directories are no pages", "cbz", { "Chapter 1/", "Chapter 1/01.png" },
        { "Chapter 1/01.png" });
    row("no image, no pages", "cbz", { "notes.txt" }, {});
    row("duplicates are kept once", "cbr", { "b.png", "a.png", "b.png" }, { "a.png", "b.png" });
}

void TestPageOrder::pageList()
{
    QFETCH(QString, suffix);
    QFETCH(QStringList, entries);
    QFETCH(QStringList, pages);

    QList<TestSupport::ZipEntry> contents;
    for (const QString& entry : entries)
        contents << TestSupport::ZipEntry(entry.toUtf8(), QByteArray("bytes"));
    const QString path = dir.filePath("book." + suffix);
    QVERIFY(suffix == QLatin1String("cbz") ? TestSupport::writeZip(path, contents)
                                           : TestSupport::writeRar(path, contents));
    QCOMPARE(comicPageNames(path), pages);
}

TAMBER_TEST_MAIN(TestPageOrder)
#include "tst_pageorder.moc"
