// SPDX-License-Identifier: MIT
#include "CommandLine.h"
#include "HostCompat.h"

#include <CLI/CLI.hpp>

#include <QHash>

#include <algorithm>
#include <string>
#include <vector>

namespace {

std::string utf8(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return std::string(bytes.constData(), size_t(bytes.size()));
}

QString fromUtf8(const std::string& text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

} // namespace

CommandOption::CommandOption(
    const QString& name, const QString& description, const QString& valueName)
    : CommandOption(QStringList(name), description, valueName)
{
}

CommandOption::CommandOption(
    const QStringList& names, const QString& description, const QString& valueName)
    : m_names(names)
    , m_description(description)
    , m_valueName(valueName)
{
}

CommandOption& CommandOption::accepting(
    std::function<bool(const QString&)> test, const QString& error)
{
    m_test = std::move(test);
    m_error = error;
    return *this;
}

QString CommandOption::problem(const QString& value) const
{
    return !m_test || m_test(value) ? QString() : m_error.arg(value);
}

struct CommandLine::Private
{
    CLI::App app;
    PositionalMode mode = OptionsAnywhere;
    std::vector<std::string> positionals;
    QHash<QString, CLI::Option*> options;
    QList<CommandOption> declared;
    QString error;
};

CommandLine::CommandLine(PositionalMode mode)
    : d(new Private)
{
    d->mode = mode;
    // Help is an option like the others: the program prints its own.
    d->app.set_help_flag();
    if (mode == StopAtFirstArgument)
        d->app.prefix_command();
    else
        d->app.add_option("arguments", d->positionals)->take_all();
}

CommandLine::~CommandLine() = default;

void CommandLine::addOptions(const QList<CommandOption>& options)
{
    d->declared += options;
    for (const CommandOption& option : options) {
        QStringList spellings;
        for (const QString& name : option.names())
            spellings << (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
        const std::string names = utf8(spellings.join(QStringLiteral(",")));
        const std::string description = utf8(option.description());
        CLI::Option* parsed = option.valueName().isEmpty()
            ? d->app.add_flag(names, description)
            : d->app.add_option(names, description)->type_name(utf8(option.valueName()));
        parsed->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        for (const QString& name : option.names())
            d->options.insert(name, parsed);
    }
}

bool CommandLine::parse(const QStringList& arguments)
{
    // CLI11 takes the arguments last first, without the program's name.
    std::vector<std::string> reversed;
    for (int i = arguments.size() - 1; i > 0; --i)
        reversed.push_back(utf8(arguments.at(i)));
    try {
        d->app.parse(reversed);
    } catch (const CLI::ParseError& error) {
        d->error = fromUtf8(error.what());
        return false;
    }
    if (d->mode == StopAtFirstArgument)
        d->positionals = d->app.remaining();
    for (const CommandOption& option : d->declared) {
        if (isSet(option))
            d->error = option.problem(value(option));
        if (!d->error.isEmpty())
            return false;
    }
    return true;
}

QString CommandLine::errorText() const
{
    return d->error;
}

bool CommandLine::isSet(const QString& name) const
{
    const CLI::Option* option = d->options.value(name);
    return option && option->count() > 0;
}

QString CommandLine::value(const QString& name) const
{
    const QStringList all = values(name);
    return all.isEmpty() ? QString() : all.last();
}

QStringList CommandLine::values(const QString& name) const
{
    QStringList result;
    if (const CLI::Option* option = d->options.value(name)) {
        for (const std::string& value : option->results())
            result << fromUtf8(value);
    }
    return result;
}

QStringList CommandLine::positionalArguments() const
{
    QStringList result;
    for (const std::string& argument : d->positionals)
        result << fromUtf8(argument);
    return result;
}
