// SPDX-License-Identifier: MIT
// The tamber program end to end: the built binary, run as a user runs it.

#include "TestSupport.h"

#include <nlohmann/json.hpp>

#include <QImageReader>
#include <QProcess>
#include <QtTest>

#include <cstdio>

using TestSupport::jsonAt;
using TestSupport::jsonText;
using TestSupport::parseJson;
using TestSupport::pluginFile;
using TestSupport::Tamber;

class TestTamber : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void everyCommandHasItsHelp_data();
    void everyCommandHasItsHelp();
    void usageErrorsExitWithStatus2_data();
    void usageErrorsExitWithStatus2();
    void pluginShowsWhatItDeclares();
    void refusedPluginExitsWithStatus2_data();
    void refusedPluginExitsWithStatus2();
    void unusableLibraryExitsWithStatus2_data();
    void unusableLibraryExitsWithStatus2();
    void libraryDefaultsToXdgDataHome();
    void accountNameIsSetShownAndCleared();

    void coverFormatFollowsTheSuffix();
    void importReplacesRecordsAndReportsFailures();
    void failedWritesToStandardOutputExit1_data();
    void failedWritesToStandardOutputExit1();

private:
    Tamber::Run tamber(const QStringList& arguments) { return m_tamber->run(arguments); }
    QString path(const QString& name) const { return m_dir->filePath(name); }

    std::unique_ptr<TestSupport::TemporaryDir> m_dir;
    std::unique_ptr<Tamber> m_tamber;
};

void TestTamber::init()
{
    m_dir = std::make_unique<TestSupport::TemporaryDir>();
    m_tamber = std::make_unique<Tamber>(m_dir->path());
}

void TestTamber::everyCommandHasItsHelp_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("usage");
    QTest::addColumn<QStringList>("options");

    const QStringList global { "--library FILE", "--plugin FILE", "-h, --help" };
    const auto row = [&global](const char* command, const char* usage, QStringList options) {
        QTest::newRow(command) << QString(command) << QString(usage) << options + global;
    };
    row("import", "import PATH...", {});
    row("list", "list [--json]", { "--json" });
    row("show", "show BOOK [--json]", { "--json" });
    row("cover", "cover BOOK -o FILE", { "-o, --output FILE" });
    row("render", "render BOOK [--page N] [OPTIONS] -o FILE",
        { "--page N", "--size WxH", "--zoom Z", "--orientation O", "-o, --output FILE" });
    row("read", "read BOOK [--size WxH]", { "--size WxH" });
    row("session", "session [--size WxH] [SCRIPT]", { "--size WxH" });
    row("config", "config account-name [NAME]", {});
    row("plugin", "plugin [--json]", { "--json" });
}

// Each command's help starts with its usage and gives a line to each option
// it takes; the manual page has a section for it.
void TestTamber::everyCommandHasItsHelp()
{
    QFETCH(QString, command);
    QFETCH(QString, usage);
    QFETCH(QStringList, options);

    const Tamber::Run help = tamber({ command, "--help" });
    QCOMPARE(help.status, 0);
    const QString text = QString::fromUtf8(help.out);
    QVERIFY2(text.startsWith("Usage: tamber " + usage + '\n'), qPrintable(text));
    for (const QString& option : options)
        QVERIFY2(
            text.contains("\n  " + option + ' '), qPrintable(option + " missing in:\n" + text));

    const Tamber::Run manual = tamber({ "--man" });
    QCOMPARE(manual.status, 0);
    QVERIFY(
        manual.out.contains(".SS \"tamber " + QString(usage).replace('-', "\\-").toUtf8() + '"'));
}

void TestTamber::usageErrorsExitWithStatus2_data()
{
    QTest::addColumn<QStringList>("arguments");

    const auto row
        = [](const char* name, const QStringList& arguments) { QTest::newRow(name) << arguments; };
    row("no command", {});
    row("an unknown command", { "frobnicate" });
    row("an unknown option", { "list", "--colour" });
    row("a global option without its value", { "--library" });
    row("list with an argument", { "list", "all" });
    row("cover without an output file", { "cover", "/a.cbz" });
    row("an unknown setting", { "config", "colour" });
    row("session with two scripts", { "session", "a", "b" });
    row("session with a size without height", { "session", "--size", "800" });
    row("session with an empty screen", { "session", "--size", "0x600" });
    row("render on a screen too large to paint",
        { "render", "a.cbz", "--size", "100000x100000", "-o", "x.png" });
    row("render without an output file", { "render", "a.cbz" });
    row("render of page 0", { "render", "a.cbz", "--page", "0", "-o", "x.png" });
    row("render below the smallest zoom", { "render", "a.cbz", "--zoom", "0.5", "-o", "x.png" });
    row("render above the largest zoom", { "render", "a.cbz", "--zoom", "5", "-o", "x.png" });
    row("render turned by 5", { "render", "a.cbz", "--orientation", "5", "-o", "x.png" });
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
    const nlohmann::json plugin = parseJson(run.out);
    // tamber names the file it loaded by its canonical path, whatever links
    // lead to the build.
    QCOMPARE(jsonText(jsonAt(plugin, "/file")), QFileInfo(pluginFile()).canonicalFilePath());
    QCOMPARE(jsonText(jsonAt(plugin, "/verification")),
        QString::fromLatin1(TestSupport::verificationText));
    // Every format Qt reads: images first among the MIME types, comics
    // first among the patterns.
    QStringList mimeTypes;
    QStringList patterns = { "*.cbz", "*.cbr" };
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        mimeTypes << "image/" + QString::fromLatin1(format);
        patterns << "*." + QString::fromLatin1(format);
    }
    QCOMPARE(TestSupport::jsonTexts(jsonAt(plugin, "/mimeTypes")),
        mimeTypes << "application/x-cbz"
                  << "application/x-cbr");
    QCOMPARE(TestSupport::jsonTexts(jsonAt(plugin, "/fileExtensions")), patterns);
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
    QVERIFY2(run.err.contains("its build key \"arm qws/linux ostra-gcc"), run.err.constData());
    QVERIFY(run.out.isEmpty());
    // Commands that need the plug-in refuse the same way.
    QVERIFY(TestSupport::writeComic(path("a.cbz"), 1));
    QCOMPARE(tamber(options << "import" << path("a.cbz")).status, 2);
}

void TestTamber::unusableLibraryExitsWithStatus2_data()
{
    QTest::addColumn<QStringList>("arguments"); // "BOOK" stands for a comic's path
    QTest::addColumn<QByteArray>("contents"); // null: no file
    QTest::addColumn<QString>("reason");

    // The library's own tests try every kind of unusable file; here, the exit.
    const auto row = [](const char* name, const QStringList& arguments, const QByteArray& contents,
                         const char* reason) {
        QTest::newRow(name) << arguments << contents << QString(reason);
    };
    const QByteArray csv = "title,author\nA,B\n";
    row("a CSV file, to list", { "list" }, csv, "not a tamber library");
    row("a CSV file, to import", { "import", "BOOK" }, csv, "not a tamber library");
    row("a damaged library", { "list" }, "damaged", "is damaged");
    // A mistyped --library must not leave an empty library behind.
    row("no file, to list", { "list" }, QByteArray(), "no such library");
    row("no file, to show", { "show", "BOOK" }, QByteArray(), "no such library");
    row("no file, to render", { "render", "BOOK", "-o", "x.png" }, QByteArray(), "no such library");
}

void TestTamber::unusableLibraryExitsWithStatus2()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, contents);
    QFETCH(QString, reason);

    const QString file = path("library.sqlite");
    QVERIFY(TestSupport::writeComic(path("a.cbz"), 1));
    if (contents == "damaged") {
        // Whole tables, but their pages overwritten past the schema's.
        QCOMPARE(tamber({ "--library", file, "import", path("a.cbz") }).status, 0);
        contents = TestSupport::readFile(file);
        contents.replace(4096, contents.size() - 4096, QByteArray(contents.size() - 4096, '\xaa'));
    }
    if (!contents.isNull())
        QVERIFY(TestSupport::writeFile(file, contents));
    arguments.replaceInStrings(QStringLiteral("BOOK"), path("a.cbz"));
    const Tamber::Run run = tamber(QStringList { "--library", file } + arguments);
    QCOMPARE(run.status, 2);
    QVERIFY2(run.err.contains(reason.toUtf8()), run.err.constData());
    QVERIFY2(!run.err.contains("statement"), run.err.constData());
    if (contents.isNull())
        QVERIFY(QDir(m_dir->path()).entryList({ "library*" }, QDir::Files).isEmpty());
    else
        QCOMPARE(TestSupport::readFile(file), contents);
}

void TestTamber::libraryDefaultsToXdgDataHome()
{
    m_tamber->environment.remove("TAMBER_LIBRARY");
    QVERIFY(TestSupport::writeComic(path("a.cbz"), 1));
    QCOMPARE(tamber({ "import", path("a.cbz") }).status, 0);
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

// The covers of both samples show in the opening trace; here, that the
// file's suffix picks the format.
void TestTamber::coverFormatFollowsTheSuffix()
{
    QVERIFY(TestSupport::writeComic(path("a.cbz"), 1));
    QCOMPARE(tamber({ "import", path("a.cbz") }).status, 0);
    for (const char* format : { "png", "jpeg" }) {
        const QString cover = path(QStringLiteral("cover.") + format);
        QCOMPARE(tamber({ "cover", path("a.cbz"), "-o", cover }).status, 0);
        QCOMPARE(QImageReader(cover).format(), QByteArray(format));
    }
}

void TestTamber::importReplacesRecordsAndReportsFailures()
{
    const QString comic = path("Good.cbz");
    QVERIFY(TestSupport::writeComic(comic, 4));
    QCOMPARE(tamber({ "import", comic }).status, 0);
    QVERIFY(TestSupport::writeComic(comic, 3));
    QVERIFY(TestSupport::writeZip(path("Empty.cbz"), { { "readme.txt", "No pages in here.\n" } }));
    QVERIFY(TestSupport::writeFile(path("Text.cbz"), "not a zip\n"));
    // The same file through a linked folder and a linked file.
    QVERIFY(QFile::link(m_dir->path(), path("linked")));
    QVERIFY(QFile::link(comic, path("Alias.cbz")));
    // Names that Qt cannot name, and names that would drive a terminal.
    QVERIFY(TestSupport::writeComic(path("folder/x"), 1));
    QVERIFY(std::rename(QFile::encodeName(path("folder/x")).constData(),
                (QFile::encodeName(m_dir->path()) + "/folder/Bad\xff.cbz").constData())
        == 0);
    QVERIFY(TestSupport::writeComic(path("folder/Red\x1b[31m\nTwo.cbz"), 1));
    // Suffixes match in any case; files of other types and hidden ones are left alone.
    QVERIFY(TestSupport::writeComic(path("folder/more/Shouting.CBZ"), 2));
    QVERIFY(TestSupport::writeFile(path("folder/notes.txt"), "not a comic\n"));
    QVERIFY(TestSupport::writeFile(path("folder/.trash/broken.cbz"), "not a zip\n"));

    const Tamber::Run run = tamber({ "import", path("Empty.cbz"), comic, path("linked/Good.cbz"),
        path("Alias.cbz"), path("missing.cbz"), path("Text.cbz"), path("folder") });
    QCOMPARE(run.status, 1);
    // A file reached by three paths is imported once, under the id it has.
    QCOMPARE(
        run.out, QByteArray("Good (3 pages)\nRed\\e[31m\\nTwo (1 page)\nShouting (2 pages)\n"));
    QVERIFY2(run.err.contains("Empty.cbz: no pages found"), run.err.constData());
    QVERIFY2(run.err.contains("missing.cbz: no such file"), run.err.constData());
    QVERIFY2(run.err.contains("Text.cbz: not a ZIP file"), run.err.constData());
    QVERIFY2(run.err.contains("folder/Bad\\xff.cbz: skipped, the name is not valid UTF-8"),
        run.err.constData());
    // No progress bar when standard error is not a terminal.
    QCOMPARE(run.err.count('\n'), 4);
    // Qt cannot remove it either.
    std::remove((QFile::encodeName(m_dir->path()) + "/folder/Bad\xff.cbz").constData());
    const Tamber::Run list = tamber({ "list" });
    QCOMPARE(list.out.count('\n'), 4);
    QVERIFY2(!list.out.contains('\x1b'), list.out.constData());
    const nlohmann::json shown = parseJson(tamber({ "show", comic, "--json" }).out);
    QCOMPARE(int(jsonAt(shown, "/pages").size()), 3);
    QCOMPARE(jsonAt(shown, "/volume/pageCount"), nlohmann::json(3));
}

void TestTamber::failedWritesToStandardOutputExit1_data()
{
    QTest::addColumn<QString>("command");

    // The reader is gone long before tamber has started.
    QTest::newRow("import into a pipe nobody reads") << "\"$0\" import \"$1\" | true";
    QTest::newRow("list into a full disk") << "\"$0\" list >/dev/full";
    QTest::newRow("show into a full disk") << "\"$0\" show \"$1/c1.cbz\" >/dev/full";
}

void TestTamber::failedWritesToStandardOutputExit1()
{
    QFETCH(QString, command);
    for (int i = 1; i <= 3; ++i)
        QVERIFY(TestSupport::writeComic(path(QStringLiteral("comics/c%1.cbz").arg(i)), 1));
    if (!command.contains("import"))
        QCOMPARE(tamber({ "import", path("comics") }).status, 0);

    QProcess shell;
    shell.setProcessEnvironment(m_tamber->environment);
    shell.start("bash",
        { "-c", "set -o pipefail; " + command, TestSupport::binDir() + "/tamber", path("comics") });
    QVERIFY(shell.waitForFinished(60000));
    QCOMPARE(shell.exitCode(), 1);
    QVERIFY2(shell.readAllStandardError().contains("cannot write to standard output"), "");
    // The import went on to the end.
    QCOMPARE(int(parseJson(tamber({ "list", "--json" }).out).size()), 3);
}

TAMBER_TEST_GUILESS_MAIN(TestTamber)
#include "tst_tamber.moc"
