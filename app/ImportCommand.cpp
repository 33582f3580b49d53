#include "ImportCommand.h"

#include "Application.h"
#include "ImportFileFinder.h"
#include "ParserHost.h"
#include "PluginInterface.h"
#include "PluginLoader.h"
#include "ProgressBar.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

QString pageCount(int count)
{
    return count == 1 ? QStringLiteral("1 page") : QStringLiteral("%1 pages").arg(count);
}

} // namespace

QString ImportCommand::name() const
{
    return QStringLiteral("import");
}

QString ImportCommand::synopsis() const
{
    return QStringLiteral("PATH...");
}

QString ImportCommand::summary() const
{
    return QStringLiteral("Imports comic files; folders are searched for the plug-in's file types");
}

void ImportCommand::addOptions(QCommandLineParser& parser) const
{
    parser.addPositionalArgument(QStringLiteral("PATH"),
        QStringLiteral("A comic file or a folder of them."), QStringLiteral("PATH..."));
}

int ImportCommand::run(Application& app, const QCommandLineParser& parser) const
{
    QStringList paths = parser.positionalArguments();
    if (paths.isEmpty())
        return Application::usageError(QStringLiteral("import needs a file or folder"), this);
    // A file URL names the same file as its path.
    for (QString& path : paths) {
        if (path.startsWith(QLatin1String("file://")))
            path.remove(0, 7);
    }
    if (!app.openLibrary())
        return Application::UsageError;
    PluginLoader* loader = app.loadPlugin();
    if (!loader)
        return Application::UsageError;

    QStringList problems;
    const QStringList files
        = ImportFileFinder(loader->plugin()->fileExtensions()).find(paths, &problems);
    for (const QString& problem : problems)
        Application::warn(problem);

    int failures = problems.size();
    ParserHost host(loader->plugin());
    ProgressBar progress(files.size(), files.size() > 1 && ProgressBar::isTerminal());
    for (int i = 0; i < files.size(); ++i) {
        const QString& file = files.at(i);
        progress.show(i, QFileInfo(file).fileName());
        QString error;
        const QVector<Volume> books = host.importFile(file, &error);
        progress.clear();
        if (books.isEmpty()) {
            Application::warn(QStringLiteral("%1: %2").arg(
                file, error.isEmpty() ? QStringLiteral("no pages found") : error));
            ++failures;
        }
        for (const Volume& book : books)
            Application::printLine(
                QStringLiteral("%1 (%2)").arg(book.getTitle(), pageCount(book.pageCount())));
    }
    return failures == 0 ? Application::Success : Application::Failed;
}
