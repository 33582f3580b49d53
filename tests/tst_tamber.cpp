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
    void importReplacesRecordsAndReportsFailures();
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
    const Tamber::Run run = tamber({ "plugin", "--json" });
    QCOMPARE(run.status, 0);
    const QJsonObject plugin = json(run).toObject();
    QCOMPARE(plugin.value("file").toString(), pluginFile());
    QCOMPARE(plugin.value("verification").toString(), QString::fromLatin1(verificationText));
    // In the plug-in's order; what that order is, is tst_plugin's business.
    ComicsReaderPlugin declared;
    QCOMPARE(strings(plugin.value("mimeTypes")), declared.mimeTypes());
    QCOMPARE(strings(plugin.value("fileExtensions")), declared.fileExtensions());
    QVERIFY(tamber({ "plugin" }).out.contains("buildkey=arm qws/linux"));
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
    QVERIFY(TestSupport::writeFile(path("plugin.so"), otherKey));
    QStringList options;
    if (byOption)
        options << "--plugin" << path("plugin.so");
    else
        m_tamber->environment.insert("TAMBER_PLUGIN", path("plugin.so"));

    const Tamber::Run run = tamber(options + QStringList { "plugin" });
    QCOMPARE(run.status, 2);
    QVERIFY2(run.err.contains("build key"), run.err.constData());
    QVERIFY(run.out.isEmpty());
    // Commands that need the plug-in refuse the same way.
    QVERIFY(TestSupport::writeComic(path("a.cbz"), 1));
    QCOMPARE(tamber(options << "import" << path("a.cbz")).status, 2);
}

void TestTamber::unusableLibraryExitsWithStatus2()
{
    // The library's own tests try every kind of unusable file; here, the exit.
    const QString file = path("library.csv");
    QVERIFY(TestSupport::writeFile(file, "title,author\nA,B\n"));
    const Tamber::Run run = tamber({ "--library", file, "list" });
    QCOMPARE(run.status, 2);
    QVERIFY2(run.err.contains("cannot open the library"), run.err.constData());
    m_tamber->environment.insert("TAMBER_LIBRARY", file);
    QCOMPARE(tamber({ "import", path("none.cbz") }).status, 2);
    QCOMPARE(TestSupport::readFile(file), QByteArray("title,author\nA,B\n"));
}

void TestTamber::libraryDefaultsToXdgDataHome()
{
    m_tamber->environment.remove("TAMBER_LIBRARY");
    QCOMPARE(tamber({ "list" }).status, 0);
    QVERIFY(QFile::exists(path("data/tamber/library.sqlite")));
    QVERIFY(!QFile::exists(m_tamber->library()));
}

void TestTamber::accountNameIsSetShownAndCleared()
{
    const QStringList accountName = { "config", "account-name" };
    QCOMPARE(tamber(accountName).out, QByteArray());
    QCOMPARE(tamber(accountName + QStringList { "Ann Smith" }).status, 0);
    QCOMPARE(tamber(accountName).out, QByteArray("Ann Smith\n"));
    QCOMPARE(tamber(accountName + QStringList { QString() }).status, 0);
    QCOMPARE(tamber(accountName).out, QByteArray());
}

void TestTamber::importsExactlyTheComicsOfAFolder()
{
    TAMBER_REQUIRE_SAMPLES();
    const QString folder = path("comics");
    QVERIFY(QDir().mkpath(folder + "/more"));
    QVERIFY(QFile::copy(TestSupport::sampleCbz(), folder + "/Captain Science #001.cbz"));
    QVERIFY(QFile::copy(TestSupport::sampleCbr(), folder + "/more/Captain Science #001-cbi.cbr"));
    // Suffixes match in any case; files of other types and hidden ones are left alone.
    QVERIFY(TestSupport::writeComic(folder + "/more/Shouting.CBZ", 2));
    QVERIFY(TestSupport::writeFile(folder + "/notes.txt", "not a comic\n"));
    QVERIFY(TestSupport::writeFile(folder + "/ComicInfo.xml", "<ComicInfo/>\n"));
    QVERIFY(TestSupport::writeFile(folder + "/.trash/broken.cbz", "not a zip\n"));

    const Tamber::Run run = tamber({ "import", folder });
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out.count('\n'), 3);
    QVERIFY(run.out.contains("Captain Science #001 (5 pages)\n"));
    QVERIFY(run.out.contains("Shouting (2 pages)\n"));
    // No progress bar when standard error is not a terminal.
    QCOMPARE(run.err, QByteArray());

    const Tamber::Run list = tamber({ "list", "--json" });
    QCOMPARE(list.status, 0);
    QStringList ids;
    for (const QJsonValue& book : json(list).toArray())
        ids << book.toObject().value("id").toString();
    ids.sort();
    QCOMPARE(ids,
        QStringList({ folder + "/Captain Science #001.cbz",
            folder + "/more/Captain Science #001-cbi.cbr", folder + "/more/Shouting.CBZ" }));

    const Tamber::Run text = tamber({ "list" });
    QVERIFY(text.out.startsWith("TITLE"));
    QCOMPARE(text.out.count('\n'), 4);
}

// Which pages the two samples hold is tst_rararchive's; their titles show in
// the session traces. Here, show's shape and the covers of both kinds.
void TestTamber::samplesGiveTheSameRecordsAndCovers()
{
    TAMBER_REQUIRE_SAMPLES();
    const QStringList samples = { TestSupport::sampleCbz(), TestSupport::sampleCbr() };
    QCOMPARE(tamber(QStringList { "import" } + samples).status, 0);

    QList<QSize> coverSizes;
    for (const QString& sample : samples) {
        const Tamber::Run run = tamber({ "show", sample, "--json" });
        QCOMPARE(run.status, 0);
        const QJsonObject shown = json(run).toObject();
        QCOMPARE(shown.value("volume").toObject().value("pageCount").toInt(), 5);
        const QJsonArray pages = shown.value("pages").toArray();
        QCOMPARE(pages.size(), 5);
        QCOMPARE(pages.at(4).toObject().value("title").toString(), QStringLiteral("Page 5"));

        const QString cover = path(QFileInfo(sample).suffix() + "-cover.png");
        QCOMPARE(tamber({ "cover", sample, "-o", cover }).status, 0);
        QImageReader reader(cover);
        QCOMPARE(reader.format(), QByteArray("png"));
        coverSizes << reader.size();
    }
    QVERIFY(coverSizes.at(0).isValid());
    QCOMPARE(coverSizes.at(0), coverSizes.at(1));

    // The format follows the file's suffix.
    QCOMPARE(tamber({ "cover", samples.first(), "-o", path("cover.jpg") }).status, 0);
    QCOMPARE(QImageReader(path("cover.jpg")).format(), QByteArray("jpeg"));
}

void TestTamber::importReplacesRecordsAndReportsFailures()
{
    const QString comic = path("Good.cbz");
    QVERIFY(TestSupport::writeComic(comic, 4));
    QCOMPARE(tamber({ "import", comic }).status, 0);
    QVERIFY(TestSupport::writeComic(comic, 3));
    QVERIFY(TestSupport::writeZip(path("Empty.cbz"), { { "readme.txt", "No pages in here.\n" } }));

    const Tamber::Run run
        = tamber({ "import", path("Empty.cbz"), comic, comic, path("missing.cbz") });
    QCOMPARE(run.status, 1);
    // A file named twice is imported once.
    QCOMPARE(run.out, QByteArray("Good (3 pages)\n"));
    QVERIFY2(run.err.contains("Empty.cbz: no pages found"), run.err.constData());
    QVERIFY2(run.err.contains("missing.cbz: no such file"), run.err.constData());
    QCOMPARE(json(tamber({ "list", "--json" })).toArray().size(), 1);
    const QJsonObject shown = json(tamber({ "show", comic, "--json" })).toObject();
    QCOMPARE(shown.value("pages").toArray().size(), 3);
    QCOMPARE(shown.value("volume").toObject().value("pageCount").toInt(), 3);
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

    const QString comics = path("comics");
    QVERIFY(TestSupport::writeComic(comics + "/Found.cbz", 1));
    QVERIFY(TestSupport::writeComic(comics + "/Lost.cbz", 1));
    QVERIFY(QFile::link(comics, path("link")));
    QCOMPARE(tamber({ "import", comics + "/Found.cbz" }).status, 0);

    // Paths are written relative to the test folder; ids are absolute.
    if (book.startsWith(QLatin1String("file://")))
        book = QStringLiteral("file://") + path(book.mid(7));
    else if (book.startsWith(QLatin1String("comics/")) || book.startsWith(QLatin1String("link/")))
        book = path(book);
    const Tamber::Run run = tamber({ "show", book, "--json" }, comics);
    QCOMPARE(run.status, status);
    if (status == 0)
        QCOMPARE(json(run).toObject().value("volume").toObject().value("id").toString(),
            comics + "/Found.cbz");
    else
        QVERIFY2(run.err.contains("no such book"), run.err.constData());
}

QTEST_GUILESS_MAIN(TestTamber)
#include "tst_tamber.moc"
