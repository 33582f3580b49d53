#include "ComicArchiveFactory.h"
#include "ComicZipArchive.h"
#include "NullArchive.h"
#include "RarArchive.h"

#include <QtTest>

#include <memory>

class TestArchiveFactory : public QObject
{
    Q_OBJECT

public:
    enum Kind { None, Zip, Rar, Image };

private slots:
    void choosesBySuffix_data();
    void choosesBySuffix();
};

Q_DECLARE_METATYPE(TestArchiveFactory::Kind)

namespace {

TestArchiveFactory::Kind kindOf(ComicArchive* archive)
{
    if (!archive)
        return TestArchiveFactory::None;
    if (dynamic_cast<ComicZipArchive*>(archive))
        return TestArchiveFactory::Zip;
    if (dynamic_cast<RarArchive*>(archive))
        return TestArchiveFactory::Rar;
    if (dynamic_cast<NullArchive*>(archive))
        return TestArchiveFactory::Image;
    return TestArchiveFactory::None;
}

} // namespace

void TestArchiveFactory::choosesBySuffix_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<Kind>("kind");

    QTest::newRow("upper-case CBZ is a ZIP") << "/books/Comic.CBZ" << Zip;
    QTest::newRow("zave is a second ZIP suffix") << "/books/comic.zave" << Zip;
    QTest::newRow("cbr is a RAR") << "/books/Comic.cbr" << Rar;
    QTest::newRow("only the last suffix counts") << "/books/a.tar.cbr" << Rar;
    QTest::newRow("image after a comic suffix") << "/books/page.cbz.png" << Image;
    QTest::newRow("image keeps the path's case") << "/Books/Page.PNG" << Image;
    QTest::newRow("file:// reaches the archive unchanged") << "file:///books/a.png" << Image;
    QTest::newRow("dot only in a directory name") << "/books/my.comics/book" << None;
    QTest::newRow("comic suffix only on the directory") << "/books/old.cbz/book" << None;
    QTest::newRow("no suffix, but ends like a format") << "/books/my.cbz/scanpng" << Image;
    QTest::newRow("unknown suffix gives no archive") << "/books/notes.txt" << None;
}

void TestArchiveFactory::choosesBySuffix()
{
    QFETCH(QString, path);
    QFETCH(Kind, kind);

    const std::unique_ptr<ComicArchive> archive(ComicArchiveFactory::instance(path));
    QCOMPARE(kindOf(archive.get()), kind);
    if (kind == Image)
        QCOMPARE(archive->files(), QStringList(path));
}

QTEST_MAIN(TestArchiveFactory)
#include "tst_archivefactory.moc"
