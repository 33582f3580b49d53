// The reading view's dog ears against the bookmarks that the store holds:
// hidden ones, ones without extra data or with extra data that is no number,
// and removal by page key, which the store asks the view for.

#include "ReaderFixture.h"

#include "DogEarManager.h"
#include "Library.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

using namespace ReaderFixture;

class TestReaderDogEars : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void checkDogEar_data();
    void checkDogEar();
    void removeByPageKey_data();
    void removeByPageKey();

private:
    // A view on a new six-page book whose store holds dog ears with these
    // extra data, in order; "hidden:" before one marks it hidden.
    ProbeReader* makeView(const QStringList& dogEars);
    QStringList storedDogEars() const;

    QTemporaryDir dir;
    QPointer<QWidget> container;
    QString bookId;
    int books = 0;
};

void TestReaderDogEars::initTestCase()
{
    QVERIFY(dir.isValid());
    QString error;
    QVERIFY2(Library::open(dir.filePath(QStringLiteral("library.db")), &error), qPrintable(error));
}

void TestReaderDogEars::init()
{
    container = new QWidget;
}

void TestReaderDogEars::cleanup()
{
    delete container;
}

ProbeReader* TestReaderDogEars::makeView(const QStringList& dogEars)
{
    QStringList names;
    for (int i = 0; i < 6; ++i)
        names << QStringLiteral("p%1.png").arg(i + 1);
    const Comic book = records(dir.filePath(QStringLiteral("book%1.cbz").arg(++books)), names);
    bookId = book.volume.getId();
    if (!Library::storeBook(book.volume, book.pages))
        return nullptr;
    for (QString extraData : dogEars) {
        Bookmark dogEar;
        const QString hidden = QStringLiteral("hidden:");
        dogEar.setHidden(extraData.startsWith(hidden));
        dogEar.setExtraData(extraData.remove(hidden));
        dogEar.setVolumeId(bookId);
        if (!Library::addDogEar(bookId, dogEar))
            return nullptr;
    }
    auto* view = new ProbeReader(new QWidget(container), nullptr);
    view->renderPagelet(book.pages.first(), ReadingNavigationDefault);
    return view;
}

QStringList TestReaderDogEars::storedDogEars() const
{
    QStringList extraData;
    for (const Bookmark& dogEar : Library::dogEars(bookId))
        extraData << (dogEar.isHidden() ? QStringLiteral("hidden:") : QString())
                + dogEar.getExtraData();
    return extraData;
}

void TestReaderDogEars::checkDogEar_data()
{
    QTest::addColumn<QStringList>("dogEars");
    QTest::addColumn<int>("page");
    QTest::addColumn<bool>("hasDogEar");

    QTest::newRow("a hidden dog ear does not count") << QStringList { "hidden:3" } << 3 << false;
    QTest::newRow("a visible one after a hidden one does")
        << QStringList { "hidden:3", "3" } << 3 << true;
    QTest::newRow("empty extra data never counts, even on the first page")
        << QStringList { "" } << 0 << false;
    QTest::newRow("extra data that is no number counts on the first page")
        << QStringList { "abc" } << 0 << true;
    QTest::newRow("and only there") << QStringList { "abc" } << 1 << false;
    QTest::newRow("no dog ears") << QStringList() << 0 << false;
}

void TestReaderDogEars::checkDogEar()
{
    QFETCH(QStringList, dogEars);
    QFETCH(int, page);
    QFETCH(bool, hasDogEar);

    ProbeReader* view = makeView(dogEars);
    QVERIFY(view);
    view->setPage(page);
    bool flag = false;
    view->checkDogEar(flag);
    QCOMPARE(flag, hasDogEar);
}

void TestReaderDogEars::removeByPageKey_data()
{
    QTest::addColumn<QStringList>("dogEars");
    QTest::addColumn<int>("page");
    QTest::addColumn<QStringList>("left");

    // The store asks the view for each dog ear's key.
    QTest::newRow("extra data that is no number belongs to the first page")
        << QStringList { "abc", "2" } << 0 << QStringList { "2" };
    QTest::newRow("hidden ones go by their key too")
        << QStringList { "hidden:1", "1", "5" } << 1 << QStringList { "5" };
    QTest::newRow("a page without a dog ear removes nothing")
        << QStringList { "2", "" } << 4 << QStringList { "2", "" };
}

void TestReaderDogEars::removeByPageKey()
{
    QFETCH(QStringList, dogEars);
    QFETCH(int, page);
    QFETCH(QStringList, left);

    ProbeReader* view = makeView(dogEars);
    QVERIFY(view);
    view->setPage(page);
    view->removeDogEar();
    QCOMPARE(storedDogEars(), left);
}

QTEST_MAIN(TestReaderDogEars)
#include "tst_readerdogears.moc"
