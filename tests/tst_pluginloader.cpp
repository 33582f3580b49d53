// SPDX-License-Identifier: MIT
// Loading the plug-in as the device does: the verification text first, read
// from the file without running it, then the root object and its interface.

#include "ComicsReaderPlugin.h"
#include "ElfSectionReader.h"
#include "ParserInterface.h"
#include "PluginInterface.h"
#include "PluginLoader.h"
#include "TestSupport.h"

#include <QFile>
#include <QLibrary>
#include <QPointer>
#include <QtTest>

#include <memory>

extern "C" QObject* qt_plugin_instance();

using TestSupport::pluginFile;
using TestSupport::verificationText;

namespace {

// Whether the process has mapped the file, that is, loaded it.
bool isMapped(const QString& path)
{
    return TestSupport::readFile(QStringLiteral("/proc/self/maps"))
        .contains(QFile::encodeName(path));
}

} // namespace

class TestPluginLoader : public QObject
{
    Q_OBJECT

private slots:
    void acceptsTheBuiltPlugin();
    void refusesWhatTheDeviceWouldNotLoad_data();
    void refusesWhatTheDeviceWouldNotLoad();
    void rootObjectIsKeptUntilDeleted();
    void parsersAreNewObjectsOwnedByTheCaller();

private:
    TestSupport::TemporaryDir m_dir;
};

void TestPluginLoader::acceptsTheBuiltPlugin()
{
    // The section holds exactly the text and its closing NUL.
    QByteArray section;
    ElfSectionReader reader(pluginFile());
    QVERIFY2(reader.read(".qtplugin", &section), qPrintable(reader.errorString()));
    QCOMPARE(section, verificationText + '\0');

    PluginLoader loader(pluginFile());
    QVERIFY2(loader.load(), qPrintable(loader.errorString()));
    QCOMPARE(loader.verificationText(), verificationText);
    QCOMPARE(loader.instance()->metaObject()->className(), "ComicsReaderPlugin");
    QVERIFY(loader.plugin());

    // What the file says without running is what the running plug-in says.
    QLibrary library(pluginFile());
    const auto query
        = reinterpret_cast<const char* (*)()>(library.resolve("qt_plugin_query_verification_data"));
    QVERIFY(query);
    QCOMPARE(QByteArray(query()), verificationText);
}

void TestPluginLoader::refusesWhatTheDeviceWouldNotLoad_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");

    const QByteArray plugin = TestSupport::readFile(pluginFile());
    // Copies of the built plug-in with one text replaced by another of its size;
    // another build key is tst_tamber's, through the program.
    const auto patched = [&plugin](const QByteArray& text, const QByteArray& replacement) {
        return QByteArray(plugin).replace(text, replacement);
    };
    QTest::newRow("another Qt version")
        << patched("version=4.8.0", "version=4.7.0") << "its Qt version \"4.7.0\"";
    QTest::newRow("a debug build")
        << patched("debug=false\n", "debug=true\n\n") << "its debug flag \"true\"";
    QTest::newRow("no build key") << patched("buildkey=", "buildkex=") << "it gives no build key";
    QTest::newRow("no verification pattern")
        << patched("pattern=QT_PLUGIN_", "pattern=XX_PLUGIN_") << "no verification text";
    QTest::newRow("no .qtplugin section") << patched(QByteArray(".qtplugin\0", 10),
        QByteArray(".qtplugix\0", 10)) << "no section .qtplugin";
    QTest::newRow("an empty file") << QByteArray() << "not an ELF file";
    QTest::newRow("a text file") << QByteArray("pattern=QT_PLUGIN_VERIFICATION_DATA\n")
                                 << "not an ELF file";
    QTest::newRow("cut inside the ELF header") << plugin.left(40) << "truncated ELF header";
    QTest::newRow("cut before the section table") << plugin.left(plugin.size() / 2) << "truncated";
    QTest::newRow("cut inside the section table")
        << plugin.left(plugin.size() - 100) << "truncated";
}

void TestPluginLoader::refusesWhatTheDeviceWouldNotLoad()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);

    const QString path = m_dir.filePath(QString::fromLatin1(QTest::currentDataTag()) + ".so");
    QVERIFY(TestSupport::writeFile(path, bytes));
    PluginLoader loader(path);
    QVERIFY(!loader.load());
    QVERIFY2(loader.errorString().contains(reason), qPrintable(loader.errorString()));
    QVERIFY(!loader.plugin());
    QVERIFY(!isMapped(path));

    PluginLoader missing(m_dir.filePath("missing.so"));
    QVERIFY(!missing.load());
    QVERIFY(missing.errorString().contains(QLatin1String("no such file")));
}

void TestPluginLoader::rootObjectIsKeptUntilDeleted()
{
    QPointer<QObject> first = qt_plugin_instance();
    QVERIFY(first);
    QCOMPARE(qt_plugin_instance(), first.data());
    QVERIFY(!first->parent());
    // The host asks for the interface by its id.
    QCOMPARE(first->qt_metacast("com.ostra.tamber.PluginInterface"),
        static_cast<void*>(qobject_cast<PluginInterface*>(first.data())));

    delete first.data();
    QVERIFY(!first);
    QObject* second = qt_plugin_instance();
    QVERIFY(second);
    QCOMPARE(second->metaObject()->className(), "ComicsReaderPlugin");
    QCOMPARE(qt_plugin_instance(), second);
}

void TestPluginLoader::parsersAreNewObjectsOwnedByTheCaller()
{
    ComicsReaderPlugin plugin;
    std::unique_ptr<ParserInterface> first(plugin.parser());
    std::unique_ptr<ParserInterface> second(plugin.parser());
    QVERIFY(first && second);
    QVERIFY(first.get() != second.get());
    QVERIFY(!first->parent());
    QVERIFY(first->qt_metacast("ParserInterface"));
}

TAMBER_TEST_GUILESS_MAIN(TestPluginLoader)
#include "tst_pluginloader.moc"
