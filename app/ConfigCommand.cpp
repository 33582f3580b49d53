#include "ConfigCommand.h"

#include "Application.h"
#include "HostTrace.h"
#include "PagewiseSettings.h"

#include <QCommandLineParser>

namespace {
const QString accountName = QStringLiteral("account-name");
}

QString ConfigCommand::name() const
{
    return QStringLiteral("config");
}

QString ConfigCommand::synopsis() const
{
    return QStringLiteral("account-name [NAME]");
}

QString ConfigCommand::summary() const
{
    return QStringLiteral("Shows or sets the social account name (\"\" clears it)");
}

void ConfigCommand::addOptions(QCommandLineParser& parser) const
{
    parser.addPositionalArgument(QStringLiteral("KEY"), QStringLiteral("account-name"));
    parser.addPositionalArgument(QStringLiteral("VALUE"),
        QStringLiteral("The new value; an empty one clears the setting."),
        QStringLiteral("[VALUE]"));
}

int ConfigCommand::run(Application&, const QCommandLineParser& parser) const
{
    const QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty() || arguments.size() > 2)
        return Application::usageError(
            QStringLiteral("config needs a KEY and at most one VALUE"), this);
    if (arguments.first() != accountName)
        return Application::usageError(QStringLiteral("unknown setting \"%1\" (known: %2)")
                                           .arg(arguments.first(), accountName),
            this);

    HostTrace::Suppress ownBehalf;
    PagewiseSettings settings { Device() };
    if (arguments.size() == 2) {
        settings.setFacebookName(arguments.at(1));
        return Application::Success;
    }
    const QString name = settings.facebookName();
    if (name.isEmpty())
        Application::warn(QStringLiteral("no account name is set"));
    else
        Application::printLine(name);
    return Application::Success;
}
