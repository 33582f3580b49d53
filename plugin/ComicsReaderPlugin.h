// SPDX-License-Identifier: MIT
#ifndef COMICSREADERPLUGIN_H
#define COMICSREADERPLUGIN_H

#include "PluginInterface.h"

#include <QObject>

// The plug-in's root object: the file types it reads, and a parser or a
// reading view on request. Both are new objects owned by the caller.
class ComicsReaderPlugin : public QObject, public PluginInterface
{
    Q_OBJECT
    Q_INTERFACES(PluginInterface)

public:
    ComicsReaderPlugin();
    ~ComicsReaderPlugin() override;

    QStringList mimeTypes() override;
    QStringList fileExtensions() override;
    QWidget* reader(PluginState* state, QWidget* parent) override;
    ParserInterface* parser() override;
};

#endif
