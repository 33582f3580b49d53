// SPDX-License-Identifier: MIT
#include "CommandTable.h"

#include "ConfigCommand.h"
#include "CoverCommand.h"
#include "ImportCommand.h"
#include "ListCommand.h"
#include "PluginCommand.h"
#include "ReadCommand.h"
#include "RenderCommand.h"
#include "SessionCommand.h"
#include "ShowCommand.h"

const QVector<const Command*>& CommandTable::commands()
{
    static const ImportCommand import;
    static const ListCommand list;
    static const ShowCommand show;
    static const CoverCommand cover;
    static const ConfigCommand config;
    static const PluginCommand plugin;
    static const ReadCommand read;
    static const RenderCommand render;
    static const SessionCommand session;
    static const QVector<const Command*> table
        = { &import, &list, &show, &cover, &render, &read, &session, &config, &plugin };
    return table;
}

const Command* CommandTable::find(const QString& name)
{
    for (const Command* command : commands()) {
        if (command->name() == name)
            return command;
    }
    return nullptr;
}
