// SPDX-License-Identifier: MIT
#include "ShowCommand.h"

#include "Application.h"
#include "BookArgument.h"
#include "Library.h"
#include "ReadingStatus.h"
#include "TraceJson.h"

#include "CommandLine.h"

QString ShowCommand::name() const
{
    return QStringLiteral("show");
}

QString ShowCommand::synopsis() const
{
    return QStringLiteral("BOOK [--json]");
}

QString ShowCommand::summary() const
{
    return QStringLiteral("Shows a book's record and its page records in reading order");
}

QString ShowCommand::description() const
{
    return QStringLiteral(
        "Prints the book's fields as the library stores them (id, title, author, "
        "description, MIME type, date, content type, user id, image id, pages, status, "
        "progress and the page of its reading position), then one line per page in "
        "reading order: its 0-based index, its title and its id.");
}

QList<CommandOption> ShowCommand::options() const
{
    return { CommandOption(QStringLiteral("json"),
        QStringLiteral("Prints {\"volume\": BOOK, \"pages\": [PAGE, ...]} as JSON instead; "
                       "a page record has the fields id, title, bookId, volumeIndex, "
                       "contentType, mimeType and userId.")) };
}

QVector<Command::Argument> ShowCommand::arguments() const
{
    return { BookArgument::help() };
}

QVector<Command::Example> ShowCommand::examples() const
{
    return { { QStringLiteral("tamber show ~/Comics/Issue\\ 1.cbz"),
        QStringLiteral("Shows the book imported from that file, and its pages.") } };
}

Command::Needs ShowCommand::needs() const
{
    return Needs::oneBook(name(), false);
}

int ShowCommand::run(Application&, const Invocation& call) const
{
    const QString& id = call.book;
    const Volume book = Library::book(id);
    const QVector<Pagelet> pages = Library::pages(id);

    if (call.options.isSet(QStringLiteral("json"))) {
        QVector<QByteArray> items;
        for (const Pagelet& page : pages)
            items << TraceJson::pagelet(page);
        Application::print(
            TraceJson::object({ { QStringLiteral("volume"), TraceJson::volume(book) },
                { QStringLiteral("pages"), TraceJson::array(items) } })
            + '\n');
        return Application::Success;
    }

    const QDateTime date = book.attribute(ATTRIBUTE_DATE).toDateTime();
    const QList<QPair<QString, QString>> fields = {
        { QStringLiteral("id"), book.getId() },
        { QStringLiteral("title"), book.getTitle() },
        { QStringLiteral("author"), book.attribute(ATTRIBUTE_ATTRIBUTION).toString() },
        { QStringLiteral("description"), book.attribute(ATTRIBUTE_DESCRIPTION).toString() },
        { QStringLiteral("MIME type"), book.attribute(ATTRIBUTE_MIME_TYPE).toString() },
        { QStringLiteral("date"),
            date.isValid() ? date.toLocalTime().toString(Qt::ISODate) : QString() },
        { QStringLiteral("content type"), book.getContentType() },
        { QStringLiteral("user id"), book.getUserID() },
        { QStringLiteral("image id"), book.getImageId() },
        { QStringLiteral("pages"), QString::number(book.pageCount()) },
        { QStringLiteral("status"), ReadingStatus::name(book.readStatus()) },
        { QStringLiteral("read"), QStringLiteral("%1%").arg(book.percentRead()) },
        { QStringLiteral("bookmark"), book.bookmarkedPageId() },
    };
    for (const auto& field : fields)
        Application::printLine(QStringLiteral("%1 %2")
                                   .arg(field.first + QLatin1Char(':'), -14)
                                   .arg(field.second)
                                   .trimmed());
    Application::printLine(QString());
    const int width = QString::number(pages.size()).size();
    for (const Pagelet& page : pages)
        Application::printLine(QStringLiteral("%1  %2  %3")
                                   .arg(page.getVolumeIndex(), width)
                                   .arg(page.getTitle(), page.getId()));
    return Application::Success;
}
