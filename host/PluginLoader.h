// SPDX-License-Identifier: MIT
#ifndef TAMBER_PLUGINLOADER_H
#define TAMBER_PLUGINLOADER_H

#include "TamberGlobal.h"

#include <QByteArray>
#include <QLibrary>
#include <QMap>
#include <QString>

class PluginInterface;
class QObject;

// Loads a reader plug-in the way the device does: first the verification text
// from the file's ".qtplugin" section, read without running any of its code and
// compared with the host's own values; only then the library, its root object
// (qt_plugin_instance) and that object's PluginInterface.
class TAMBER_EXPORT PluginLoader
{
public:
    explicit PluginLoader(const QString& fileName);
    ~PluginLoader();
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;

    // Reads and checks the verification text only.
    bool verify();
    // verify(), then loads the library and finds the interface. The library
    // stays loaded for the rest of the process, as the root object does.
    bool load();

    QString fileName() const;
    // Why verify() or load() refused, for people.
    QString errorString() const;
    // The verification text as the file holds it, without its closing NUL.
    QByteArray verificationText() const;
    QObject* instance() const;
    PluginInterface* plugin() const;

    // The verification values of the device's Qt build.
    static QByteArray hostVersion();
    static QByteArray hostDebug();
    static QByteArray hostBuildKey();

    // The key=value lines of a verification text; empty when the text does not
    // start with the verification pattern.
    static QMap<QByteArray, QByteArray> parseVerificationText(const QByteArray& text);

private:
    bool fail(const QString& message);

    QString m_fileName;
    QString m_errorString;
    QByteArray m_verificationText;
    QLibrary m_library;
    QObject* m_instance = nullptr;
    PluginInterface* m_plugin = nullptr;
};

#endif
