// SPDX-License-Identifier: MIT
#include "PluginLoader.h"

#include "ElfSectionReader.h"
#include "HostCompat.h"
#include "PluginInterface.h"

#include <QFileInfo>
#include <QObject>

namespace {

const QByteArray pattern("QT_PLUGIN_VERIFICATION_DATA");

using InstanceFunction = QObject* (*)();

} // namespace

PluginLoader::PluginLoader(const QString& fileName)
    : m_fileName(fileName)
{
}

// The library is not unloaded: the root object and the objects it made live on.
PluginLoader::~PluginLoader() = default;

QByteArray PluginLoader::hostVersion()
{
    return QByteArrayLiteral("4.8.0");
}

QByteArray PluginLoader::hostDebug()
{
    return QByteArrayLiteral("false");
}

QByteArray PluginLoader::hostBuildKey()
{
    return QByteArrayLiteral(
        "arm qws/linux ostra-g++ no-pkg-config QT_NO_QWS_CURSOR QT_NO_QWS_QPF2");
}

QMap<QByteArray, QByteArray> PluginLoader::parseVerificationText(const QByteArray& text)
{
    QMap<QByteArray, QByteArray> values;
    const int end = text.indexOf('\0');
    const QList<QByteArray> lines = (end < 0 ? text : text.left(end)).split('\n');
    for (const QByteArray& line : lines) {
        const int equals = line.indexOf('=');
        if (equals > 0)
            values.insert(line.left(equals), line.mid(equals + 1));
    }
    if (lines.isEmpty() || lines.first() != "pattern=" + pattern)
        return {};
    return values;
}

bool PluginLoader::fail(const QString& message)
{
    m_errorString = message;
    return false;
}

bool PluginLoader::verify()
{
    m_errorString.clear();
    m_verificationText.clear();
    const QFileInfo info(m_fileName);
    if (!info.exists())
        return fail(QStringLiteral("%1: no such file").arg(m_fileName));
    if (!info.isFile())
        return fail(QStringLiteral("%1: not a file").arg(m_fileName));

    ElfSectionReader reader(m_fileName);
    QByteArray section;
    if (!reader.read(".qtplugin", &section))
        return fail(
            QStringLiteral("%1 is not a plug-in: %2").arg(m_fileName, reader.errorString()));
    const int end = section.indexOf('\0');
    m_verificationText = end < 0 ? section : section.left(end);

    const QMap<QByteArray, QByteArray> values = parseVerificationText(m_verificationText);
    if (values.isEmpty())
        return fail(QStringLiteral("%1 is not a plug-in: its .qtplugin section holds no "
                                   "verification text")
                        .arg(m_fileName));
    const struct
    {
        const char* key;
        const char* what;
        QByteArray expected;
    } checks[] = {
        { "version", "Qt version", hostVersion() },
        { "debug", "debug flag", hostDebug() },
        { "buildkey", "build key", hostBuildKey() },
    };
    for (const auto& check : checks) {
        const QByteArray actual = values.value(check.key);
        if (!values.contains(check.key))
            return fail(QStringLiteral("%1 was refused: it gives no %2 (the host's is \"%3\")")
                            .arg(m_fileName, QLatin1String(check.what),
                                QString::fromLatin1(check.expected)));
        if (actual != check.expected)
            return fail(
                QStringLiteral("%1 was refused: its %2 \"%3\" differs from the host's \"%4\"")
                    .arg(m_fileName, QLatin1String(check.what), QString::fromLatin1(actual),
                        QString::fromLatin1(check.expected)));
    }
    return true;
}

bool PluginLoader::load()
{
    if (m_plugin)
        return true;
    if (!verify())
        return false;

    m_library.setFileName(QFileInfo(m_fileName).absoluteFilePath());
    if (!m_library.load())
        return fail(
            QStringLiteral("%1 cannot be loaded: %2").arg(m_fileName, m_library.errorString()));
    const auto instanceFunction
        = reinterpret_cast<InstanceFunction>(m_library.resolve("qt_plugin_instance"));
    if (!instanceFunction)
        return fail(
            QStringLiteral("%1 is not a plug-in: it has no qt_plugin_instance").arg(m_fileName));
    m_instance = instanceFunction();
    if (!m_instance)
        return fail(QStringLiteral("%1 gave no root object").arg(m_fileName));
    m_plugin = static_cast<PluginInterface*>(m_instance->qt_metacast(PluginInterface_iid));
    if (!m_plugin)
        return fail(QStringLiteral("%1 is not a reader plug-in: its root object %2 has no %3")
                        .arg(m_fileName, QLatin1String(m_instance->metaObject()->className()),
                            QLatin1String(PluginInterface_iid)));
    return true;
}

QString PluginLoader::fileName() const
{
    return m_fileName;
}

QString PluginLoader::errorString() const
{
    return m_errorString;
}

QByteArray PluginLoader::verificationText() const
{
    return m_verificationText;
}

QObject* PluginLoader::instance() const
{
    return m_instance;
}

PluginInterface* PluginLoader::plugin() const
{
    return m_plugin;
}
