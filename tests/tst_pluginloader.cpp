// Loading the plug-in as the device does: the verification text first, read
// from the file without running it, then the root object and its interface.

#include "ElfSectionReader.h"
#include "PluginInterface.h"
#include "PluginLoader.h"
#include "TestSupport.h"

#include <QFile>
#include <QLibrary>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

namespace {

const QByteArray verificationText
    = "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
      "version=4.8.0\n"
      "debug=false\n"
      "buildkey=arm qws/linux ostra-g++ no-pkg-config QT_NO_QWS_CURSOR QT_NO_QWS_QPF2";

QString builtPlugin()
{
    return TestSupport::binDir() + QStringLiteral("/libcomicsreader.so");
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Whether the process has mapped the file, that is, loaded it.
bool isMapped(const QString& path)
{
    return contents(QStringLiteral("/proc/self/maps")).contains(QFile::encodeName(path));
}

// A minimal ELF file of the given class and byte order: the null section, the
// section name table and one section holding the contents.
class ElfWriter
{
public:
    ElfWriter(bool is64, bool bigEndian)
        : m_is64(is64)
        , m_bigEndian(bigEndian)
    {
    }

    QByteArray write(const QByteArray& name, const QByteArray& contents, quint64 claimedSize) const
    {
        const int headerSize = m_is64 ? 64 : 52;
        const int entrySize = m_is64 ? 64 : 40;
        const QByteArray names = QByteArray("\0.shstrtab\0", 11) + name + '\0';
        const int namesAt = headerSize;
        const int contentsAt = namesAt + names.size();
        const int tableAt = contentsAt + contents.size();

        QByteArray elf(tableAt + 3 * entrySize, '\0');
        elf.replace(0, 4,
            "\x7f"
            "ELF");
        elf[4] = m_is64 ? 2 : 1;
        elf[5] = m_bigEndian ? 2 : 1;
        elf[6] = 1;
        put(elf, 16, 2, 3); // a shared object
        put(elf, 18, 2, m_is64 ? 62 : 40);
        put(elf, 20, 4, 1);
        put(elf, m_is64 ? 0x28 : 0x20, word(), quint64(tableAt));
        put(elf, m_is64 ? 0x3a : 0x2e, 2, quint64(entrySize));
        put(elf, m_is64 ? 0x3c : 0x30, 2, 3);
        put(elf, m_is64 ? 0x3e : 0x32, 2, 1);
        elf.replace(namesAt, names.size(), names);
        elf.replace(contentsAt, contents.size(), contents);

        section(elf, tableAt + entrySize, 1, 3, quint64(namesAt), quint64(names.size()));
        section(elf, tableAt + 2 * entrySize, 11, 1, quint64(contentsAt), claimedSize);
        return elf;
    }

private:
    int word() const { return m_is64 ? 8 : 4; }

    void put(QByteArray& elf, int at, int size, quint64 value) const
    {
        uchar* p = reinterpret_cast<uchar*>(elf.data()) + at;
        switch (size) {
        case 2:
            m_bigEndian ? qToBigEndian(quint16(value), p) : qToLittleEndian(quint16(value), p);
            break;
        case 4:
            m_bigEndian ? qToBigEndian(quint32(value), p) : qToLittleEndian(quint32(value), p);
            break;
        default:
            m_bigEndian ? qToBigEndian(value, p) : qToLittleEndian(value, p);
        }
    }

    void section(
        QByteArray& elf, int at, quint32 name, quint32 type, quint64 offset, quint64 size) const
    {
        put(elf, at, 4, name);
        put(elf, at + 4, 4, type);
        put(elf, at + (m_is64 ? 24 : 16), word(), offset);
        put(elf, at + (m_is64 ? 32 : 20), word(), size);
    }

    bool m_is64;
    bool m_bigEndian;
};

using Replacements = QList<QPair<QByteArray, QByteArray>>;

} // namespace

Q_DECLARE_METATYPE(Replacements)

class TestPluginLoader : public QObject
{
    Q_OBJECT

private slots:
    void acceptsTheBuiltPlugin();
    void refusesPatchedCopies_data();
    void refusesPatchedCopies();
    void refusesFilesThatAreNoPlugins_data();
    void refusesFilesThatAreNoPlugins();
    void readsSectionsOfEveryElfKind_data();
    void readsSectionsOfEveryElfKind();

private:
    QTemporaryDir m_dir;
};

void TestPluginLoader::acceptsTheBuiltPlugin()
{
    // The section holds exactly the text and its closing NUL.
    QByteArray section;
    ElfSectionReader reader(builtPlugin());
    QVERIFY2(reader.read(".qtplugin", &section), qPrintable(reader.errorString()));
    QCOMPARE(section, verificationText + '\0');

    PluginLoader loader(builtPlugin());
    QVERIFY2(loader.load(), qPrintable(loader.errorString()));
    QCOMPARE(loader.verificationText(), verificationText);
    QCOMPARE(loader.instance()->metaObject()->className(), "ComicsReaderPlugin");
    QVERIFY(loader.plugin());
    // The interface is the root object's second base.
    QVERIFY(static_cast<void*>(loader.plugin()) != static_cast<void*>(loader.instance()));
    QCOMPARE(loader.plugin()->fileExtensions().mid(0, 2), QStringList({ "*.cbz", "*.cbr" }));

    // What the file says without running is what the running plug-in says.
    QLibrary library(builtPlugin());
    const auto query
        = reinterpret_cast<const char* (*)()>(library.resolve("qt_plugin_query_verification_data"));
    QVERIFY(query);
    QCOMPARE(QByteArray(query()), verificationText);
}

void TestPluginLoader::refusesPatchedCopies_data()
{
    QTest::addColumn<Replacements>("replacements");
    QTest::addColumn<QString>("reason");

    QTest::newRow("another build key") << Replacements { { "ostra-g++", "ostra-gcc" } }
                                       << "its build key \"arm qws/linux ostra-gcc";
    QTest::newRow("another Qt version")
        << Replacements { { "version=4.8.0", "version=4.7.0" } } << "its Qt version \"4.7.0\"";
    QTest::newRow("a debug build")
        << Replacements { { "debug=false\n", "debug=true\n\n" } } << "its debug flag \"true\"";
    QTest::newRow("no build key") << Replacements { { "buildkey=", "buildkex=" } }
                                  << "it gives no build key";
    QTest::newRow("no verification pattern")
        << Replacements { { "pattern=QT_PLUGIN_", "pattern=XX_PLUGIN_" } }
        << "no verification text";
    QTest::newRow("no .qtplugin section")
        << Replacements { { QByteArray(".qtplugin\0", 10), QByteArray(".qtplugix\0", 10) } }
        << "no section .qtplugin";
}

void TestPluginLoader::refusesPatchedCopies()
{
    QFETCH(Replacements, replacements);
    QFETCH(QString, reason);

    QByteArray bytes = contents(builtPlugin());
    for (const auto& replacement : replacements) {
        QCOMPARE(replacement.first.size(), replacement.second.size());
        QVERIFY(bytes.contains(replacement.first));
        bytes.replace(replacement.first, replacement.second);
    }
    const QString copy = m_dir.filePath(QString::fromLatin1(QTest::currentDataTag()) + ".so");
    QVERIFY(write(copy, bytes));

    PluginLoader loader(copy);
    QVERIFY(!loader.load());
    QVERIFY2(loader.errorString().contains(reason), qPrintable(loader.errorString()));
    QVERIFY(!loader.plugin());
    QVERIFY(!isMapped(copy));
}

void TestPluginLoader::refusesFilesThatAreNoPlugins_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");

    const QByteArray plugin = contents(builtPlugin());
    QTest::newRow("an empty file") << QByteArray() << "not an ELF file";
    QTest::newRow("a text file") << QByteArray("pattern=QT_PLUGIN_VERIFICATION_DATA\n")
                                 << "not an ELF file";
    QTest::newRow("cut inside the ELF header") << plugin.left(40) << "truncated ELF header";
    QTest::newRow("cut before the section table") << plugin.left(plugin.size() / 2) << "truncated";
    QTest::newRow("cut inside the section table")
        << plugin.left(plugin.size() - 100) << "truncated";
}

void TestPluginLoader::refusesFilesThatAreNoPlugins()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);

    const QString path = m_dir.filePath(QStringLiteral("broken.so"));
    QVERIFY(write(path, bytes));
    PluginLoader loader(path);
    QVERIFY(!loader.load());
    QVERIFY2(loader.errorString().contains(reason), qPrintable(loader.errorString()));
    QVERIFY(!isMapped(path));

    PluginLoader missing(m_dir.filePath(QStringLiteral("missing.so")));
    QVERIFY(!missing.load());
    QVERIFY(missing.errorString().contains(QLatin1String("no such file")));
}

void TestPluginLoader::readsSectionsOfEveryElfKind_data()
{
    QTest::addColumn<bool>("is64");
    QTest::addColumn<bool>("bigEndian");

    QTest::newRow("32-bit little-endian, as on the device") << false << false;
    QTest::newRow("32-bit big-endian") << false << true;
    QTest::newRow("64-bit little-endian") << true << false;
    QTest::newRow("64-bit big-endian") << true << true;
}

void TestPluginLoader::readsSectionsOfEveryElfKind()
{
    QFETCH(bool, is64);
    QFETCH(bool, bigEndian);

    const ElfWriter writer(is64, bigEndian);
    const QByteArray text = verificationText + '\0';
    QByteArray section;
    QString error;
    QVERIFY2(ElfSectionReader::readFromData(writer.write(".qtplugin", text, quint64(text.size())),
                 ".qtplugin", &section, &error),
        qPrintable(error));
    QCOMPARE(section, text);

    QVERIFY(!ElfSectionReader::readFromData(
        writer.write(".other", text, quint64(text.size())), ".qtplugin", &section, &error));
    QVERIFY2(error.contains(QLatin1String("no section")), qPrintable(error));
    // A section that claims more bytes than the file has.
    QVERIFY(
        !ElfSectionReader::readFromData(writer.write(".qtplugin", text, Q_UINT64_C(0xfffffffffff0)),
            ".qtplugin", &section, &error));
    QVERIFY2(error.contains(QLatin1String("truncated")), qPrintable(error));
}

QTEST_GUILESS_MAIN(TestPluginLoader)
#include "tst_pluginloader.moc"
