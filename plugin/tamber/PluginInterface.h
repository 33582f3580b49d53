// SPDX-License-Identifier: MIT
#ifndef TAMBER_PLUGININTERFACE_H
#define TAMBER_PLUGININTERFACE_H

#include <QObject>
#include <QStringList>
#include <QtPlugin>

class ParserInterface;
class QWidget;
struct PluginState;

// What a reader plug-in offers the host: the file types it reads, a parser
// for import and a reading view.
class PluginInterface
{
public:
    virtual ~PluginInterface() {}

    virtual QStringList mimeTypes() = 0;
    virtual QStringList fileExtensions() { return QStringList(); }
    virtual QWidget* reader(PluginState* state, QWidget* parent) = 0;
    virtual ParserInterface* parser() = 0;
};

#define PluginInterface_iid "com.ostra.tamber.PluginInterface"
Q_DECLARE_INTERFACE(PluginInterface, PluginInterface_iid)

#endif
