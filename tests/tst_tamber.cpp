// The tamber program end to end: the built binary, run as a user runs it.

#include "TestSupport.h"

#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QByteArray verificationText
    = "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
      "version=4.8.0\n"
      "debug=false\n"
      "buildkey=arm qws/linux ostra-g++ no-pkg-config QT_NO_QWS_CURSOR QT_NO_QWS_QPF2";

struct Run
{
    int status = -1;
    QByteArray out;
    QByteArray err;

    QJsonValue json() const
    {
        const QJsonDocument document = QJsonDocument::fromJson(out);
        return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
    }
};

QString pluginFile()
{
    return TestSupport::binDir() + QStringLiteral("/libcomicsreader.so");
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A comic of PNG pages named p1.png, p2.png, ...
bool writeComic(const QString& path, int pages)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QList<TestSupport::ZipEntry> entries;
    for (int i = 1; i <= pages; ++i)
        entries << TestSupport::ZipEntry(QStringLiteral("p%1.png").arg(i).toUtf8(),
            TestSupport::encode(TestSupport::makePage(60, 80), "PNG"));
    return TestSupport::writeZip(path, entries);
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
    Run tamber(const QStringList& arguments, const QString& workingDirectory = QString());
    QString library() const { return m_dir->filePath(QStringLiteral("library.sqlite")); }
    QString path(const QString& name) const { return m_dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QProcessEnvironment m_environment;
};

void TestTamber::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
    m_environment.insert(QStringLiteral("XDG_DATA_HOME"), path(QStringLiteral("data")));
    m_environment.insert(QStringLiteral("TAMBER_LIBRARY"), library());
    m_environment.remove(QStringLiteral("TAMBER_PLUGIN"));
    // Without it Qt warns on standard error, which some cases check is empty.
    const QString runtime = path(QStringLiteral("runtime"));
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
}

Run TestTamber::tamber(const QStringList& arguments, const QString& workingDirectory)
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.setWorkingDirectory(workingDirectory.isEmpty() ? m_dir->path() : workingDirectory);
    process.start(TestSupport::binDir() + QStringLiteral("/tamber"), arguments);
    Run run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

void TestTamber::usageErrorsExitWithStatus2_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("no command") << QStringList();
    QTest::newRow("an unknown command") << QStringList { "frobnicate" };
    QTest::newRow("an unknown option") << QStringList { "list", "--colour" };
    QTest::newRow("a global option without its value") << QStringList { "--library" };
    QTest::newRow("import without a path") << QStringList { "import" };
    QTest::newRow("show without a book") << QStringList { "show" };
    QTest::newRow("cover without an output file") << QStringList { "cover", "/a.cbz" };
    QTest::newRow("an unknown setting") << QStringList { "config", "colour" };
    QTest::newRow("list with an argument") << QStringList { "list", "all" };
}

void TestTamber::usageErrorsExitWithStatus2()
{
    QFETCH(QStringList, arguments);

    const Run run = tamber(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY(run.out.isEmpty());
    QVERIFY(!run.err.isEmpty());
}

void TestTamber::pluginShowsWhatItDeclares()
{
    QStringList mimeTypes;
    QStringList patterns = { QStringLiteral("*.cbz"), QStringLiteral("*.cbr") };
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        mimeTypes << QStringLiteral("image/") + QString::fromLatin1(format);
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    }
    mimeTypes << QStringLiteral("application/x-cbz") << QStringLiteral("application/x-cbr");

    const Run run = tamber({ QStringLiteral("plugin"), QStringLiteral("--json") });
    QCOMPARE(run.status, 0);
    const QJsonObject plugin = run.json().toObject();
    QCOMPARE(plugin.value(QStringLiteral("file")).toString(), pluginFile());
    QCOMPARE(plugin.value(QStringLiteral("verification")).toString(),
        QString::fromLatin1(verificationText));
    QCOMPARE(strings(plugin.value(QStringLiteral("mimeTypes"))), mimeTypes);
    QCOMPARE(strings(plugin.value(QStringLiteral("fileExtensions"))), patterns);

    const Run text = tamber({ QStringLiteral("plugin") });
    QCOMPARE(text.status, 0);
    QVERIFY(text.out.contains("buildkey=arm qws/linux"));
}

void TestTamber::refusedPluginExitsWithStatus2_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");

    QByteArray otherKey = contents(pluginFile());
    otherKey.replace("ostra-g++", "ostra-gcc");
    QTest::newRow("another build key, by option") << "option" << otherKey << "build key";
    QTest::newRow("another build key, by environment") << "environment" << otherKey << "build key";
}

void TestTamber::refusedPluginExitsWithStatus2()
{
    QFETCH(QString, how);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);

    const QString plugin = path(QStringLiteral("plugin.so"));
    QVERIFY(writeFile(plugin, bytes));
    QStringList arguments = { QStringLiteral("plugin") };
    if (how == QLatin1String("option"))
        arguments << QStringLiteral("--plugin") << plugin;
    else
        m_environment.insert(QStringLiteral("TAMBER_PLUGIN"), plugin);

    const Run run = tamber(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY2(run.err.contains(reason.toUtf8()), run.err.constData());
    QVERIFY(run.out.isEmpty());
    // Commands that need the plug-in refuse the same way.
    QVERIFY(writeComic(path(QStringLiteral("a.cbz")), 1));
    QCOMPARE(tamber(arguments.mid(1) << QStringLiteral("import") << path(QStringLiteral("a.cbz")))
                 .status,
        2);
}

void TestTamber::unusableLibraryExitsWithStatus2()
{
    // The library's own tests try every kind of unusable file; here, the exit.
    const QString file = path(QStringLiteral("library.csv"));
    QVERIFY(writeFile(file, "title,author\nA,B\n"));
    const QList<QStringList> commands
        = { { QStringLiteral("list") }, { QStringLiteral("import"), path("none.cbz") } };
    for (const QStringList& command : commands) {
        const Run run = tamber(QStringList { QStringLiteral("--library"), file } + command);
        QCOMPARE(run.status, 2);
        QVERIFY2(run.err.contains("cannot open the library"), run.err.constData());
    }
    m_environment.insert(QStringLiteral("TAMBER_LIBRARY"), file);
    QCOMPARE(tamber({ QStringLiteral("list") }).status, 2);
    QCOMPARE(contents(file), QByteArray("title,author\nA,B\n"));
}

void TestTamber::libraryDefaultsToXdgDataHome()
{
    m_environment.remove(QStringLiteral("TAMBER_LIBRARY"));
    QCOMPARE(tamber({ QStringLiteral("list") }).status, 0);
    QVERIFY(QFile::exists(path(QStringLiteral("data/tamber/library.sqlite"))));
    QVERIFY(!QFile::exists(library()));
}

void TestTamber::accountNameIsSetShownAndCleared()
{
    const QStringList accountName = { QStringLiteral("config"), QStringLiteral("account-name") };
    QCOMPARE(tamber(accountName).out, QByteArray());
    QCOMPARE(tamber(accountName + QStringList { QStringLiteral("Ann Smith") }).status, 0);
    QCOMPARE(tamber(accountName).out, QByteArray("Ann Smith\n"));
    QCOMPARE(tamber(accountName + QStringList { QString() }).status, 0);
    const Run cleared = tamber(accountName);
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
    QVERIFY(writeComic(folder + QStringLiteral("/more/Shouting.CBZ"), 2));
    QVERIFY(writeFile(folder + QStringLiteral("/notes.txt"), "not a comic\n"));
    QVERIFY(writeFile(folder + QStringLiteral("/ComicInfo.xml"), "<ComicInfo/>\n"));
    QVERIFY(writeFile(folder + QStringLiteral("/.trash/broken.cbz"), "not a zip\n"));

    const Run run = tamber({ QStringLiteral("import"), folder });
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out.count('\n'), 3);
    QVERIFY(run.out.contains("Captain Science #001 (5 pages)\n"));
    QVERIFY(run.out.contains("Shouting (2 pages)\n"));
    // No progress bar when standard error is not a terminal.
    QCOMPARE(run.err, QByteArray());

    const Run list = tamber({ QStringLiteral("list"), QStringLiteral("--json") });
    QCOMPARE(list.status, 0);
    QStringList ids;
    for (const QJsonValue& book : list.json().toArray())
        ids << book.toObject().value(QStringLiteral("id")).toString();
    ids.sort();
    QCOMPARE(ids,
        QStringList({ folder + "/Captain Science #001.cbz",
            folder + "/more/Captain Science #001-cbi.cbr", folder + "/more/Shouting.CBZ" }));

    const Run text = tamber({ QStringLiteral("list") });
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
        const Run run = tamber({ QStringLiteral("show"), sample, QStringLiteral("--json") });
        QCOMPARE(run.status, 0);
        shown << run.json().toObject();

        const QString cover = path(QFileInfo(sample).suffix() + QStringLiteral("-cover.png"));
        QCOMPARE(
            tamber({ QStringLiteral("cover"), sample, QStringLiteral("-o"), cover }).status, 0);
        QImageReader reader(cover);
        QCOMPARE(reader.format(), QByteArray("png"));
        coverSizes << reader.size();
    }

    for (int i = 0; i < shown.size(); ++i) {
        const QJsonObject volume = shown.at(i).value(QStringLiteral("volume")).toObject();
        QCOMPARE(volume.value(QStringLiteral("id")).toString(), samples.at(i));
        QCOMPARE(volume.value(QStringLiteral("title")).toString(),
            QFileInfo(samples.at(i)).completeBaseName());
        QCOMPARE(volume.value(QStringLiteral("pageCount")).toInt(), 5);
        QCOMPARE(volume.value(QStringLiteral("mimeType")).toString(),
            i == 0 ? QStringLiteral("application/x-cbz") : QStringLiteral("application/x-cbr"));
        const QJsonArray pages = shown.at(i).value(QStringLiteral("pages")).toArray();
        QCOMPARE(pages.size(), 5);
        for (int page = 0; page < pages.size(); ++page) {
            QCOMPARE(pages.at(page).toObject().value(QStringLiteral("title")).toString(),
                QStringLiteral("Page %1").arg(page + 1));
            QCOMPARE(pages.at(page).toObject().value(QStringLiteral("volumeIndex")).toInt(), page);
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
    QVERIFY(writeComic(comic, 4));
    QCOMPARE(tamber({ QStringLiteral("import"), comic }).status, 0);
    QVERIFY(writeComic(comic, 2));
    QCOMPARE(tamber({ QStringLiteral("import"), comic, comic }).status, 0);

    QCOMPARE(
        tamber({ QStringLiteral("list"), QStringLiteral("--json") }).json().toArray().size(), 1);
    const QJsonObject shown
        = tamber({ QStringLiteral("show"), comic, QStringLiteral("--json") }).json().toObject();
    QCOMPARE(shown.value(QStringLiteral("pages")).toArray().size(), 2);
    QCOMPARE(shown.value(QStringLiteral("volume")).toObject().value("pageCount").toInt(), 2);
}

void TestTamber::fileWithoutPagesFailsTheImport()
{
    QVERIFY(writeComic(path(QStringLiteral("Good.cbz")), 3));
    QVERIFY(TestSupport::writeZip(
        path(QStringLiteral("Empty.cbz")), { { "readme.txt", "There are no pages in here.\n" } }));

    const Run run = tamber({ QStringLiteral("import"), path(QStringLiteral("Empty.cbz")),
        path(QStringLiteral("Good.cbz")), path(QStringLiteral("missing.cbz")) });
    QCOMPARE(run.status, 1);
    QCOMPARE(run.out, QByteArray("Good (3 pages)\n"));
    QVERIFY2(run.err.contains("Empty.cbz: no pages found"), run.err.constData());
    QVERIFY2(run.err.contains("missing.cbz: no such file"), run.err.constData());
    QCOMPARE(
        tamber({ QStringLiteral("list"), QStringLiteral("--json") }).json().toArray().size(), 1);
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
    QVERIFY(writeComic(comics + QStringLiteral("/Found.cbz"), 1));
    QVERIFY(writeComic(comics + QStringLiteral("/Lost.cbz"), 1));
    QVERIFY(QFile::link(comics, path(QStringLiteral("link"))));
    QCOMPARE(tamber({ QStringLiteral("import"), comics + QStringLiteral("/Found.cbz") }).status, 0);

    // Paths are written relative to the test folder; ids are absolute.
    if (book.startsWith(QLatin1String("file://")))
        book = QStringLiteral("file://") + path(book.mid(7));
    else if (book.startsWith(QLatin1String("comics/")) || book.startsWith(QLatin1String("link/")))
        book = path(book);
    const Run run = tamber({ QStringLiteral("show"), book, QStringLiteral("--json") }, comics);
    QCOMPARE(run.status, status);
    if (status == 0)
        QCOMPARE(run.json().toObject().value("volume").toObject().value("id").toString(),
            comics + QStringLiteral("/Found.cbz"));
    else
        QVERIFY2(run.err.contains("no such book"), run.err.constData());
}

QTEST_GUILESS_MAIN(TestTamber)
#include "tst_tamber.moc"
