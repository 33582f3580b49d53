// SPDX-License-Identifier: MIT
#include "ListCommand.h"

#include "Application.h"
#include "Library.h"
#include "ReadingStatus.h"
#include "TraceJson.h"

#include "CommandLine.h"

QString ListCommand::name() const
{
    return QStringLiteral("list");
}

QString ListCommand::synopsis() const
{
    return QStringLiteral("[--json]");
}

QString ListCommand::summary() const
{
    return QStringLiteral("Lists the books: id, title, author, pages, progress, reading status");
}

QString ListCommand::description() const
{
    return QStringLiteral(
        "Prints a table of the library's books, sorted by title: title, author, number "
        "of pages, progress in percent, reading status (unread, reading or finished) and "
        "the book's id, which other commands take as BOOK. An empty library prints "
        "nothing.");
}

QList<CommandOption> ListCommand::options() const
{
    return { CommandOption(QStringLiteral("json"),
        QStringLiteral("Prints a JSON array of book records instead, each with the fields "
                       "id, title, author, description, mimeType, date, contentType, userId, "
                       "imageId, pageCount, readStatus, bookmarkedPageId and percentRead.")) };
}

QVector<Command::Example> ListCommand::examples() const
{
    return { { QStringLiteral("tamber list --json"),
        QStringLiteral("Prints the books as JSON, for a script to read.") } };
}

Command::Needs ListCommand::needs() const
{
    Needs needs;
    needs.argumentsError = QStringLiteral("list takes no arguments");
    needs.library = Needs::ExistingLibrary;
    return needs;
}

int ListCommand::run(Application&, const Invocation& call) const
{
    const QList<Volume> books = Library::books();
    if (!Library::lastError().isEmpty()) {
        Application::warn(QStringLiteral("cannot read the library: %1").arg(Library::lastError()));
        return Application::UsageError;
    }

    if (call.options.isSet(QStringLiteral("json"))) {
        QVector<QByteArray> items;
        for (const Volume& book : books)
            items << TraceJson::volume(book);
        Application::print(TraceJson::array(items) + '\n');
        return Application::Success;
    }

    if (books.isEmpty())
        return Application::Success;
    QVector<QStringList> rows
        = { { QStringLiteral("TITLE"), QStringLiteral("AUTHOR"), QStringLiteral("PAGES"),
            QStringLiteral("READ"), QStringLiteral("STATUS"), QStringLiteral("ID") } };
    for (const Volume& book : books)
        rows << QStringList { Application::printable(book.getTitle()),
            Application::printable(book.attribute(ATTRIBUTE_ATTRIBUTION).toString()),
            QString::number(book.pageCount()), QStringLiteral("%1%").arg(book.percentRead()),
            ReadingStatus::name(book.readStatus()), Application::printable(book.getId()) };
    QVector<int> widths(rows.first().size(), 0);
    for (const QStringList& row : rows) {
        for (int column = 0; column < row.size(); ++column)
            widths[column] = qMax(widths[column], row.at(column).size());
    }
    for (const QStringList& row : rows) {
        QStringList cells;
        for (int column = 0; column < row.size(); ++column) {
            const bool isNumber = column == 2 || column == 3;
            const bool isLast = column == row.size() - 1;
            cells << (isNumber ? row.at(column).rightJustified(widths[column])
                               : row.at(column).leftJustified(isLast ? 0 : widths[column]));
        }
        Application::printLine(cells.join(QStringLiteral("  ")));
    }
    return Application::Success;
}
