// SPDX-License-Identifier: MIT
#include "CoverCommand.h"

#include "Application.h"
#include "BookArgument.h"
#include "HostTrace.h"
#include "Library.h"
#include "ParserHost.h"
#include "PluginLoader.h"

#include "CommandLine.h"
#include <QFileInfo>
#include <QImageWriter>

QString CoverCommand::name() const
{
    return QStringLiteral("cover");
}

QString CoverCommand::synopsis() const
{
    return QStringLiteral("BOOK -o FILE");
}

QString CoverCommand::summary() const
{
    return QStringLiteral("Writes a book's cover as PNG, or in the format of FILE's suffix");
}

QString CoverCommand::description() const
{
    return QStringLiteral(
        "Asks the plug-in's parser for the book's cover, its first page in reading order, "
        "and writes it at its own size. The format follows FILE's suffix when Qt can write "
        "it (png, jpg, bmp, ppm, ...), else PNG. A book without a readable first page "
        "makes the exit status 1.");
}

QList<CommandOption> CoverCommand::options() const
{
    return { CommandOption({ QStringLiteral("o"), QStringLiteral("output") },
        QStringLiteral("The image file to write (required)."), QStringLiteral("FILE")) };
}

QVector<Command::Argument> CoverCommand::arguments() const
{
    return { BookArgument::help() };
}

QVector<Command::Example> CoverCommand::examples() const
{
    return { { QStringLiteral("tamber cover ~/Comics/Issue\\ 1.cbz -o cover.jpg"),
        QStringLiteral("Writes the cover as a JPEG file.") } };
}

Command::Needs CoverCommand::needs() const
{
    Needs needs = Needs::oneBook(name(), true);
    needs.requiredOption = QStringLiteral("output");
    return needs;
}

int CoverCommand::run(Application&, const Invocation& call) const
{
    const QString output = call.options.value(QStringLiteral("output"));
    const QString& id = call.book;
    const QImage cover = ParserHost(call.loader->plugin()).coverImage(Library::book(id));
    if (cover.isNull()) {
        Application::warn(QStringLiteral("%1: the plug-in gave no cover").arg(id));
        return Application::Failed;
    }

    const QByteArray suffix = QFileInfo(output).suffix().toLower().toLatin1();
    const QByteArray format
        = QImageWriter::supportedImageFormats().contains(suffix) ? suffix : QByteArray("png");
    QImageWriter writer(output, format);
    if (!writer.write(cover)) {
        Application::warn(QStringLiteral("%1: %2").arg(output, writer.errorString()));
        return Application::Failed;
    }
    return Application::Success;
}
