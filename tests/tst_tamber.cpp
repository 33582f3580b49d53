// The tamber program end to end: the built binary, run as a user runs it.

#include "ComicsReaderPlugin.h"
#include "TestSupport.h"

#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::Tamber;

namespace {

const QByteArray verificationText
    = "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
      "version=4.8.0\n"
      "debug=false\n"
      "buildkey=arm qws/linux ostra-g++ no-pkg-config QT_NO_QWS_CURSOR QT_NO_QWS_QPF2";

QJsonValue json(const Tamber::Run& run)
{
    const QJsonDocument document = QJsonDocument::fromJson(run.out);
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

QString pluginFile()
{
    return TestSupport::binDir() + QStringLiteral("/libcomicsreader.so");
}

QStringList strings(const QJsonValue& array)
{
    QStringList result;
    for (const QJsonValue& value : array.toArray())
        result << value.toString();
    return result;
}

// The entry names of a book's pages: each page id without the book id and "/".
QStringList entryNames(const QJsonObject& shown)
{
    const QString bookId = shown.value(QStringLiteral("volume")).toObject().value("id").toString();
    QStringList names;
    for (const QJsonValue& page : shown.value(QStringLiteral("pages")).toArray())
        names << page.toObject().value(QStringLiteral("id")).toString().mid(bookId.size() + 1);
    return names;
}

} // namespace

class TestTamber : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void usageErrorsExitWithStatus2_data();
    void usageErrorsExitWithStatus2();
    void pluginShowsWhatItDeclares();
    void refusedPluginExitsWithStatus2_data();
    void refusedPluginExitsWithStatus2();
    void unusableLibraryExitsWithStatus2();
    void libraryDefaultsToXdgDataHome();
    void accountNameIsSetShownAndCleared();

    void importsExactlyTheComicsOfAFolder();
    void samplesGiveTheSameRecordsAndCovers();
    void importingAgainReplacesTheRecords();
    void fileWithoutPagesFailsTheImport();
    void bookIsFoundByIdOrPath_data();
    void bookIsFoundByIdOrPath();

private:
    Tamber::Run tamber(const QStringList& arguments, const QString& workingDirectory = QString())
    {
        return m_tamber->run(arguments, QByteArray(), workingDirectory);
    }
    QString path(const QString& name) const { return m_dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Tamber> m_tamber;
};

void TestTamber::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_tamber = std::make_unique<Tamber>(m_dir->path());
}

void TestTamber::usageErrorsExitWithStatus2_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("no command") << QStringList();
    QTest::newRow("an unknown command") << QStringList { "frobnicate" };
    QTest::newRow("an unknown option") << QStringList { "list", "--colour" };
    QTest::newRow("a global option without its value") << QStringList { "--library" };
    QTest::newRow("list with an argument") << QStringList { "list", "all" };
    QTest::newRow("cover without an output file") << QStringList { "cover", "/a.cbz" };
    QTest::newRow("an unknown setting") << QStringList { "config", "colour" };
    QTest::newRow("session with two scripts") << QStringList { "session", "a", "b" };
    QTest::newRow("session with a size without height")
        << QStringList { "session", "--size", "800" };
    QTest::newRow("session with an empty screen") << QStringList { "session", "--size", "0x600" };
    QTest::newRow("render without an output file") << QStringList { "render", "a.cbz" };
    QTest::newRow("render of page 0")
        << QStringList { "render", "a.cbz", "--page", "0", "-o", "x.png" };
    QTest::newRow("render at zoom 0")
        << QStringList { "render", "a.cbz", "--zoom", "0", "-o", "x.png" };
    QTest::newRow("render turned by 5")
        << QStringList { "render", "a.cbz", "--orientation", "5", "-o", "x.png" };
}

void TestTamber::usageErrorsExitWithStatus2()
{
    QFETCH(QStringList, arguments);

    const Tamber::Run run = tamber(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY(run.out.isEmpty());
    QVERIFY(!run.err.isEmpty());
}

void TestTamber::pluginShowsWhatItDeclares()
{
    const Tamber::Run run = tamber({ QStringLiteral("plugin"), QStringLiteral("--json") });
    QCOMPARE(run.status, 0);
    const QJsonObject plugin = json(run).toObject();
    QCOMPARE(plugin.value(QStringLiteral("file")).toString(), pluginFile());
    QCOMPARE(plugin.value(QStringLiteral("verification")).toString(),
        QString::fromLatin1(verificationText));
    // In the plug-in's order; what that order is, is tst_plugin's business.
    ComicsReaderPlugin declared;
    QCOMPARE(strings(plugin.value(QStringLiteral("mimeTypes"))), declared.mimeTypes());
    QCOMPARE(strings(plugin.value(QStringLiteral("fileExtensions"))), declared.fileExtensions());

    const Tamber::Run text = tamber({ QStringLiteral("plugin") });
    QCOMPARE(text.status, 0);
    QVERIFY(text.out.contains("buildkey=arm qws/linux"));
}

void TestTamber::refusedPluginExitsWithStatus2_data()
{
    QTest::addColumn<bool>("byOption");
    QTest::newRow("another build key, by option") << true;
    QTest::newRow("another build key, by environment") << false;
}

void TestTamber::refusedPluginExitsWithStatus2()
{
    QFETCH(bool, byOption);

    QByteArray otherKey = TestSupport::readFile(pluginFile());
    otherKey.replace("ostra-g++", "ostra-gcc");
    const QString plugin = path(QStringLiteral("plugin.so"));
    QVERIFY(TestSupport::writeFile(plugin, otherKey));
    QStringList options;
    if (byOption)
        options << QStringLiteral("--plugin") << plugin;
    else
        m_tamber->environment.insert(QStringLiteral("TAMBER_PLUGIN"), plugin);

    const Tamber::Run run = tamber(options + QStringList { QStringLiteral("plugin") });
    QCOMPARE(run.status, 2);
    QVERIFY2(run.err.contains("build key"), run.err.constData());
    QVERIFY(run.out.isEmpty());
    // Commands that need the plug-in refuse the same way.
    QVERIFY(TestSupport::writeComic(path(QStringLiteral("a.cbz")), 1));
    QCOMPARE(
        tamber(options << QStringLiteral("import") << path(QStringLiteral("a.cbz"))).status, 2);
}

void TestTamber::unusableLibraryExitsWithStatus2()
{
    // The library's own tests try every kind of unusable file; here, the exit.
    const QString file = path(QStringLiteral("library.csv"));
    QVERIFY(TestSupport::writeFile(file, "title,author\nA,B\n"));
    const Tamber::Run run = tamber({ QStringLiteral("--library"), file, QStringLiteral("list") });
    QCOMPARE(run.status, 2);
    QVERIFY2(run.err.contains("cannot open the library"), run.err.constData());
    m_tamber->environment.insert(QStringLiteral("TAMBER_LIBRARY"), file);
    QCOMPARE(tamber({ QStringLiteral("import"), path("none.cbz") }).status, 2);
    QCOMPARE(TestSupport::readFile(file), QByteArray("title,author\nA,B\n"));
}

void TestTamber::libraryDefaultsToXdgDataHome()
{
    m_tamber->environment.remove(QStringLiteral("TAMBER_LIBRARY"));
    QCOMPARE(tamber({ QStringLiteral("list") }).status, 0);
    QVERIFY(QFile::exists(path(QStringLiteral("data/tamber/library.sqlite"))));
    QVERIFY(!QFile::exists(m_tamber->library()));
}

void TestTamber::accountNameIsSetShownAndCleared()
{
    const QStringList accountName = { QStringLiteral("config"), QStringLiteral("account-name") };
    QCOMPARE(tamber(accountName).out, QByteArray());
    QCOMPARE(tamber(accountName + QStringList { QStringLiteral("Ann Smith") }).status, 0);
    QCOMPARE(tamber(accountName).out, QByteArray("Ann Smith\n"));
    QCOMPARE(tamber(accountName + QStringList { QString() }).status, 0);
    const Tamber::Run cleared = tamber(accountName);
    QCOMPARE(cleared.status, 0);
    QCOMPARE(cleared.out, QByteArray());
}

void TestTamber::importsExactlyTheComicsOfAFolder()
{
    TAMBER_REQUIRE_SAMPLES();
    const QString folder = path(QStringLiteral("comics"));
    QVERIFY(QDir().mkpath(folder + QStringLiteral("/more")));
    QVERIFY(QFile::copy(
        TestSupport::sampleCbz(), folder + QStringLiteral("/Captain Science #001.cbz")));
    QVERIFY(QFile::copy(
        TestSupport::sampleCbr(), folder + QStringLiteral("/more/Captain Science #001-cbi.cbr")));
    // Suffixes match in any case; files of other types and hidden ones are left alone.
    QVERIFY(TestSupport::writeComic(folder + QStringLiteral("/more/Shouting.CBZ"), 2));
    QVERIFY(TestSupport::writeFile(folder + QStringLiteral("/notes.txt"), "not a comic\n"));
    QVERIFY(TestSupport::writeFile(folder + QStringLiteral("/ComicInfo.xml"), "<ComicInfo/>\n"));
    QVERIFY(TestSupport::writeFile(folder + QStringLiteral("/.trash/broken.cbz"), "not a zip\n"));

    const Tamber::Run run = tamber({ QStringLiteral("import"), folder });
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out.count('\n'), 3);
    QVERIFY(run.out.contains("Captain Science #001 (5 pages)\n"));
    QVERIFY(run.out.contains("Shouting (2 pages)\n"));
    // No progress bar when standard error is not a terminal.
    QCOMPARE(run.err, QByteArray());

    const Tamber::Run list = tamber({ QStringLiteral("list"), QStringLiteral("--json") });
    QCOMPARE(list.status, 0);
    QStringList ids;
    for (const QJsonValue& book : json(list).toArray())
        ids << book.toObject().value(QStringLiteral("id")).toString();
    ids.sort();
    QCOMPARE(ids,
        QStringList({ folder + "/Captain Science #001.cbz",
            folder + "/more/Captain Science #001-cbi.cbr", folder + "/more/Shouting.CBZ" }));

    const Tamber::Run text = tamber({ QStringLiteral("list") });
    QVERIFY(text.out.startsWith("TITLE"));
    QCOMPARE(text.out.count('\n'), 4);
}

void TestTamber::samplesGiveTheSameRecordsAndCovers()
{
    TAMBER_REQUIRE_SAMPLES();
    const QStringList samples = { TestSupport::sampleCbz(), TestSupport::sampleCbr() };
    QCOMPARE(tamber(QStringList { QStringLiteral("import") } + samples).status, 0);

    QList<QJsonObject> shown;
    QList<QSize> coverSizes;
    for (const QString& sample : samples) {
        const Tamber::Run run
            = tamber({ QStringLiteral("show"), sample, QStringLiteral("--json") });
        QCOMPARE(run.status, 0);
        shown << json(run).toObject();

        const QString cover = path(QFileInfo(sample).suffix() + QStringLiteral("-cover.png"));
        QCOMPARE(
            tamber({ QStringLiteral("cover"), sample, QStringLiteral("-o"), cover }).status, 0);
        QImageReader reader(cover);
        QCOMPARE(reader.format(), QByteArray("png"));
        coverSizes << reader.size();
    }

    for (const QJsonObject& book : shown) {
        QCOMPARE(book.value(QStringLiteral("volume")).toObject().value("pageCount").toInt(), 5);
        const QJsonArray pages = book.value(QStringLiteral("pages")).toArray();
        QCOMPARE(pages.size(), 5);
        for (int page = 0; page < pages.size(); ++page) {
            QCOMPARE(pages.at(page).toObject().value(QStringLiteral("title")).toString(),
                QStringLiteral("Page %1").arg(page + 1));
        }
    }
    QCOMPARE(entryNames(shown.at(0)), entryNames(shown.at(1)));
    QVERIFY(coverSizes.at(0).isValid());
    QCOMPARE(coverSizes.at(0), coverSizes.at(1));

    // The format follows the file's suffix.
    const QString jpeg = path(QStringLiteral("cover.jpg"));
    QCOMPARE(
        tamber({ QStringLiteral("cover"), samples.first(), QStringLiteral("-o"), jpeg }).status, 0);
    QCOMPARE(QImageReader(jpeg).format(), QByteArray("jpeg"));
}

void TestTamber::importingAgainReplacesTheRecords()
{
    const QString comic = path(QStringLiteral("Again.cbz"));
    QVERIFY(TestSupport::writeComic(comic, 4));
    QCOMPARE(tamber({ QStringLiteral("import"), comic }).status, 0);
    QVERIFY(TestSupport::writeComic(comic, 2));
    QCOMPARE(tamber({ QStringLiteral("import"), comic, comic }).status, 0);

    QCOMPARE(
        json(tamber({ QStringLiteral("list"), QStringLiteral("--json") })).toArray().size(), 1);
    const QJsonObject shown
        = json(tamber({ QStringLiteral("show"), comic, QStringLiteral("--json") })).toObject();
    QCOMPARE(shown.value(QStringLiteral("pages")).toArray().size(), 2);
    QCOMPARE(shown.value(QStringLiteral("volume")).toObject().value("pageCount").toInt(), 2);
}

void TestTamber::fileWithoutPagesFailsTheImport()
{
    QVERIFY(TestSupport::writeComic(path(QStringLiteral("Good.cbz")), 3));
    QVERIFY(TestSupport::writeZip(
        path(QStringLiteral("Empty.cbz")), { { "readme.txt", "There are no pages in here.\n" } }));

    const Tamber::Run run = tamber({ QStringLiteral("import"), path(QStringLiteral("Empty.cbz")),
        path(QStringLiteral("Good.cbz")), path(QStringLiteral("missing.cbz")) });
    QCOMPARE(run.status, 1);
    QCOMPARE(run.out, QByteArray("Good (3 pages)\n"));
    QVERIFY2(run.err.contains("Empty.cbz: no pages found"), run.err.constData());
    QVERIFY2(run.err.contains("missing.cbz: no such file"), run.err.constData());
    QCOMPARE(
        json(tamber({ QStringLiteral("list"), QStringLiteral("--json") })).toArray().size(), 1);
}

void TestTamber::bookIsFoundByIdOrPath_data()
{
    QTest::addColumn<QString>("book");
    QTest::addColumn<int>("status");

    QTest::newRow("the stored id") << "comics/Found.cbz" << 0;
    QTest::newRow("a relative path") << "Found.cbz" << 0;
    QTest::newRow("a path through a link") << "link/Found.cbz" << 0;
    QTest::newRow("a file URL") << "file://comics/Found.cbz" << 0;
    QTest::newRow("a book that was never imported") << "comics/Lost.cbz" << 1;
}

void TestTamber::bookIsFoundByIdOrPath()
{
    QFETCH(QString, book);
    QFETCH(int, status);

    const QString comics = path(QStringLiteral("comics"));
    QVERIFY(TestSupport::writeComic(comics + QStringLiteral("/Found.cbz"), 1));
    QVERIFY(TestSupport::writeComic(comics + QStringLiteral("/Lost.cbz"), 1));
    QVERIFY(QFile::link(comics, path(QStringLiteral("link"))));
    QCOMPARE(tamber({ QStringLiteral("import"), comics + QStringLiteral("/Found.cbz") }).status, 0);

    // Paths are written relative to the test folder; ids are absolute.
    if (book.startsWith(QLatin1String("file://")))
        book = QStringLiteral("file://") + path(book.mid(7));
    else if (book.startsWith(QLatin1String("comics/")) || book.startsWith(QLatin1String("link/")))
        book = path(book);
    const Tamber::Run run
        = tamber({ QStringLiteral("show"), book, QStringLiteral("--json") }, comics);
    QCOMPARE(run.status, status);
    if (status == 0)
        QCOMPARE(json(run).toObject().value("volume").toObject().value("id").toString(),
            comics + QStringLiteral("/Found.cbz"));
    else
        QVERIFY2(run.err.contains("no such book"), run.err.constData());
}

QTEST_GUILESS_MAIN(TestTamber)
#include "tst_tamber.moc"
