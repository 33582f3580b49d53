// SPDX-License-Identifier: MIT
#ifndef COMMANDLINE_H
#define COMMANDLINE_H

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

// An option of the tamber program: its names without dashes ("o", "output"),
// what it does, and the name of its value, empty for a flag. The help shows
// options from these, and the command line parses with them.
class CommandOption
{
public:
    CommandOption(const QString& name, const QString& description,
        const QString& valueName = QString());
    CommandOption(const QStringList& names, const QString& description,
        const QString& valueName = QString());

    // The values the option takes: test says whether it takes one; error is
    // the usage error for one it does not, with %1 standing for the value.
    CommandOption& accepting(std::function<bool(const QString&)> test, const QString& error);

    QStringList names() const { return m_names; }
    QString description() const { return m_description; }
    QString valueName() const { return m_valueName; }
    // The usage error for the value, or empty when the option takes it.
    QString problem(const QString& value) const;

private:
    QStringList m_names;
    QString m_description;
    QString m_valueName;
    std::function<bool(const QString&)> m_test;
    QString m_error;
};

// A command line parsed against a set of options, by CLI11 under both Qts.
// Options may be given more than once: value() is the last, values() all.
// "--" ends the options.
class CommandLine
{
public:
    enum PositionalMode {
        // Options anywhere between the arguments.
        OptionsAnywhere,
        // Everything from the first argument on is an argument (the command
        // word and its own options).
        StopAtFirstArgument,
    };

    explicit CommandLine(PositionalMode mode = OptionsAnywhere);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    void addOptions(const QList<CommandOption>& options);
    // arguments.first() is the program's name. False on a usage error (an
    // unknown option, a value missing or not taken), which errorText() then
    // describes.
    bool parse(const QStringList& arguments);
    QString errorText() const;

    bool isSet(const QString& name) const;
    QString value(const QString& name) const;
    QStringList values(const QString& name) const;
    QStringList positionalArguments() const;
    bool isSet(const CommandOption& option) const { return isSet(option.names().first()); }
    QString value(const CommandOption& option) const { return value(option.names().first()); }

private:
    struct Private;
    std::unique_ptr<Private> d;
};

#endif
