// SPDX-License-Identifier: MIT
#include "ImportCommand.h"

#include "Application.h"
#include "FileProblem.h"
#include "ImportFileFinder.h"
#include "Library.h"
#include "ParserHost.h"
#include "PluginInterface.h"
#include "PluginLoader.h"
#include "ProgressBar.h"

#include "CommandLine.h"
#include <QFileInfo>
#include <QHash>

namespace {

QString pageCount(int count)
{
    return count == 1 ? QStringLiteral("1 page") : QStringLiteral("%1 pages").arg(count);
}

QString withoutScheme(QString id)
{
    return id.startsWith(QLatin1String("file://")) ? id.mid(7) : id;
}

// The stored books by the file their ids lead to, so that a file reached
// through another path (a link) replaces its book instead of adding one.
QHash<QString, QString> storedByFile()
{
    QHash<QString, QString> ids;
    for (const Volume& book : Library::books()) {
        const QString file = QFileInfo(withoutScheme(book.getId())).canonicalFilePath();
        if (!file.isEmpty() && !ids.contains(file))
            ids.insert(file, book.getId());
    }
    return ids;
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

QString ImportCommand::description() const
{
    return QStringLiteral(
        "Each PATH is a comic file or a folder; a file:// URL names the same file as its "
        "path. A folder is searched, with its subfolders but without hidden entries and "
        "linked folders, for files whose names match the plug-in's file patterns "
        "(\"tamber plugin\" lists them), case-insensitively. A file named on the command "
        "line must match them too.\n"
        "\n"
        "The plug-in's parser lists and orders the pages and the library stores one book "
        "record and one page record per page. Each book prints one line, its title and "
        "its number of pages; a file that yields no pages is reported on standard error "
        "and makes the exit status 1. On a terminal, a progress bar on standard error "
        "follows an import of more than one file.\n"
        "\n"
        "Importing a file again, under any path that leads to it (such as through a "
        "linked folder), replaces its book and page records and keeps its reading "
        "position, reading status and dog ears. A book's id is the path it was first "
        "imported under, made absolute.\n"
        "\n"
        "The import goes on when standard output goes away (tamber import ~/Comics | "
        "head -1); the exit status is then 1.");
}

QVector<Command::Argument> ImportCommand::arguments() const
{
    return { { QStringLiteral("PATH"), QStringLiteral("A comic file or a folder of them."),
        QStringLiteral("PATH...") } };
}

QVector<Command::Example> ImportCommand::examples() const
{
    return {
        { QStringLiteral("tamber import ~/Comics"),
            QStringLiteral("Imports every comic under ~/Comics.") },
        { QStringLiteral("tamber --library /tmp/try.sqlite import \"Issue 1.cbz\" page.png"),
            QStringLiteral("Imports a comic and a single picture into a library of its own.") },
    };
}

Command::Needs ImportCommand::needs() const
{
    Needs needs;
    needs.minimumArguments = 1;
    needs.maximumArguments = -1;
    needs.argumentsError = QStringLiteral("import needs a file or folder");
    needs.library = Needs::LibraryMadeIfMissing;
    needs.plugin = true;
    return needs;
}

int ImportCommand::run(Application&, const Invocation& call) const
{
    PluginLoader* loader = call.loader;
    QStringList paths = call.arguments;
    // A file URL names the same file as its path.
    for (QString& path : paths) {
        if (path.startsWith(QLatin1String("file://")))
            path.remove(0, 7);
    }

    QStringList problems;
    const QStringList files
        = ImportFileFinder(loader->plugin()->fileExtensions()).find(paths, &problems);
    for (const QString& problem : problems)
        Application::warn(problem);

    int failures = problems.size();
    QHash<QString, QString> stored = storedByFile();
    ParserHost host(loader->plugin());
    ProgressBar progress(files.size(), files.size() > 1 && ProgressBar::isTerminal());
    for (int i = 0; i < files.size(); ++i) {
        const QString canonical = QFileInfo(files.at(i)).canonicalFilePath();
        const QString file = stored.value(canonical, files.at(i));
        progress.show(i, QFileInfo(file).fileName());
        QString error;
        const QVector<Volume> books = host.importFile(file, &error);
        progress.clear();
        if (books.isEmpty()) {
            if (error.isEmpty())
                error = FileProblem::of(file);
            Application::warn(QStringLiteral("%1: %2").arg(
                file, error.isEmpty() ? QStringLiteral("no pages found") : error));
            ++failures;
        } else if (!canonical.isEmpty()) {
            stored.insert(canonical, file);
        }
        for (const Volume& book : books)
            Application::printLine(
                QStringLiteral("%1 (%2)").arg(book.getTitle(), pageCount(book.pageCount())));
    }
    return failures == 0 ? Application::Success : Application::Failed;
}
