// SPDX-License-Identifier: MIT
#include "Session.h"

#include "BookArgument.h"
#include "HostTrace.h"
#include "ImageReaderDelegate.h"
#include "Library.h"
#include "ZoomController.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QWidget>

#include <cmath>

using namespace TraceJson;

struct Session::CommandSpec
{
    const char* name;
    const char* usage;
    int minimum; // arguments
    int maximum;
    bool needsView;
    Handler handler;
};

namespace {

QString noSuchBook(const QString& argument)
{
    return QStringLiteral("%1: no such book in the library").arg(argument);
}

Volume storedBook(const QString& id)
{
    HostTrace::Suppress ownBehalf;
    return Library::book(id);
}

} // namespace

const Session::CommandSpec* Session::findCommand(const QString& name)
{
    static const CommandSpec commands[] = {
        { "import", "import PATH", 1, 1, false, &Session::import },
        { "cover", "cover BOOK [FILE]", 1, 2, false, &Session::cover },
        { "open", "open BOOK [TYPE]", 1, 2, false, &Session::open },
        { "open-page", "open-page PAGEID", 1, 1, false, &Session::openPage },
        { "open-bookmark", "open-bookmark PAGEID EXTRA", 2, 2, false, &Session::openBookmark },
        { "open-image", "open-image FILE", 1, 1, false, &Session::openImage },
        { "close", "close", 0, 0, true, &Session::close },
        { "next", "next", 0, 0, true, &Session::next },
        { "prev", "prev", 0, 0, true, &Session::prev },
        { "goto", "goto N", 1, 1, true, &Session::goTo },
        { "chapter", "chapter N", 1, 1, true, &Session::chapter },
        { "page", "page N", 1, 1, true, &Session::page },
        { "key", "key NAME", 1, 1, true, &Session::key },
        { "tap", "tap [started|updated|finished]", 0, 1, true, &Session::tap },
        { "swipe", "swipe DIRECTION", 1, 1, true, &Session::swipe },
        { "drag", "drag DX DY", 2, 2, true, &Session::drag },
        { "pinch", "pinch SCALE", 1, 1, true, &Session::pinch },
        { "zoom", "zoom FACTOR", 1, 1, true, &Session::zoom },
        { "fit-width", "fit-width", 0, 0, true, &Session::fitWidth },
        { "fit-height", "fit-height", 0, 0, true, &Session::fitHeight },
        { "rotate", "rotate", 0, 0, true, &Session::rotate },
        { "orientation", "orientation N", 1, 1, true, &Session::orientation },
        { "paint", "paint", 0, 0, true, &Session::paint },
        { "screenshot", "screenshot FILE", 1, 1, true, &Session::screenshot },
        { "save", "save", 0, 0, true, &Session::save },
        { "font", "font", 0, 0, true, &Session::font },
        { "dogear add", "dogear add", 0, 0, true, &Session::dogEarAdd },
        { "dogear remove", "dogear remove", 0, 0, true, &Session::dogEarRemove },
        { "dogear remove-record", "dogear remove-record EXTRA", 1, 1, true,
            &Session::dogEarRemoveRecord },
        { "dogear check", "dogear check [true]", 0, 1, true, &Session::dogEarCheck },
        { "dogear loaded", "dogear loaded", 0, 0, true, &Session::dogEarLoaded },
        { "dogear key", "dogear key EXTRA", 1, 1, true, &Session::dogEarKey },
        { "dogear list", "dogear list", 0, 0, false, &Session::dogEarList },
        { "state", "state", 0, 0, false, &Session::state },
        { "wait", "wait [MS]", 0, 1, false, &Session::wait },
    };
    for (const CommandSpec& command : commands) {
        if (name == QLatin1String(command.name))
            return &command;
    }
    return nullptr;
}

Session::Session(PluginInterface* plugin, const QSize& screen)
    : m_parser(plugin)
    , m_view(plugin, &m_state, screen)
{
    QObject::connect(&m_parser, SIGNAL(parserCreated(QObject*)), &m_tracer,
        SLOT(watchParser(QObject*)));
}

Session::~Session() = default;

bool Session::failed() const
{
    return m_failed;
}

void Session::run(const ScriptLine& line)
{
    const QString error = line.error.isEmpty() ? dispatch(line.words) : line.error;
    m_view.closeIfCleared();
    if (error.isEmpty())
        return;
    SessionTracer::error(error, line.number);
    m_failed = true;
}

QString Session::dispatch(QStringList words)
{
    if (words.isEmpty())
        return QString();
    QString name = words.takeFirst();
    if (name == QLatin1String("dogear") && !words.isEmpty())
        name += QLatin1Char(' ') + words.takeFirst();
    const CommandSpec* command = findCommand(name);
    if (!command) {
        return name == QLatin1String("dogear")
            ? QStringLiteral("dogear needs add, remove, remove-record, check, loaded, key or list")
            : QStringLiteral("unknown command \"%1\"").arg(name);
    }
    if (words.size() < command->minimum || words.size() > command->maximum)
        return QStringLiteral("usage: %1").arg(QLatin1String(command->usage));
    if (command->needsView && !m_view.isOpen()) {
        return m_view.closedByView()
            ? QStringLiteral("no reading view is open: the view closed its container")
            : QStringLiteral("no reading view is open");
    }
    return (this->*command->handler)(words);
}

QString Session::openView()
{
    if (!m_view.open())
        return QStringLiteral("the plug-in gave no reading view");
    m_tracer.watchView(m_view.view());
    return QString();
}

QString Session::invoke(
    const char* slot, QGenericArgument first, QGenericArgument second, QGenericArgument third)
{
    if (!QMetaObject::invokeMethod(m_view.view(), slot, Qt::DirectConnection, first, second, third))
        return QStringLiteral("the view has no slot %1").arg(QLatin1String(slot));
    return QString();
}

bool Session::toInt(const QString& text, int* value)
{
    bool ok = false;
    *value = text.toInt(&ok, 10);
    return ok;
}

bool Session::toReal(const QString& text, double* value)
{
    bool ok = false;
    *value = text.toDouble(&ok);
    return ok && std::isfinite(*value);
}

QString Session::badArgument(const QString& what, const QString& text)
{
    return QStringLiteral("bad %1 \"%2\"").arg(what, text);
}

bool Session::findPage(const QString& id, Pagelet* page)
{
    HostTrace::Suppress ownBehalf;
    for (const Volume& book : Library::books()) {
        if (!id.startsWith(book.getId() + QLatin1Char('/')))
            continue;
        for (const Pagelet& candidate : Library::pages(book.getId())) {
            if (candidate.getId() == id) {
                *page = candidate;
                return true;
            }
        }
    }
    return false;
}

QString Session::import(const QStringList& arguments)
{
    // Stored under the full path, as the device's host imports.
    QString path = arguments.first();
    if (!path.contains(QLatin1String("://")))
        path = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    QString error;
    const QVector<Volume> books = m_parser.importFile(path, &error);
    if (books.isEmpty())
        return QStringLiteral("%1: %2").arg(
            path, error.isEmpty() ? QStringLiteral("no pages found") : error);
    m_bookId = books.last().getId();
    return QString();
}

QString Session::cover(const QStringList& arguments)
{
    const QString id = BookArgument::resolve(arguments.at(0));
    if (id.isEmpty())
        return noSuchBook(arguments.at(0));
    const QImage image = m_parser.coverImage(storedBook(id));
    if (arguments.size() < 2)
        return QString();
    if (image.isNull())
        return QStringLiteral("%1: the plug-in gave no cover").arg(id);
    QString error;
    SessionView::writeImage(image, arguments.at(1), &error);
    return error;
}

QString Session::open(const QStringList& arguments)
{
    const QString id = BookArgument::resolve(arguments.at(0));
    if (id.isEmpty())
        return noSuchBook(arguments.at(0));
    int type = ReadingNavigationDefault;
    if (arguments.size() > 1 && !toInt(arguments.at(1), &type))
        return badArgument(QStringLiteral("navigation type"), arguments.at(1));
    const Volume book = storedBook(id);
    m_bookId = id;
    if (const QString error = openView(); !error.isEmpty())
        return error;
    return invoke("renderVolume", Q_ARG(Volume, book),
        Q_ARG(ReadingNavigationType, ReadingNavigationType(type)));
}

QString Session::openPage(const QStringList& arguments)
{
    Pagelet page;
    if (!findPage(arguments.at(0), &page))
        return QStringLiteral("%1: no such page in the library").arg(arguments.at(0));
    m_bookId = page.getBookId();
    if (const QString error = openView(); !error.isEmpty())
        return error;
    return invoke("renderPagelet", Q_ARG(Pagelet, page),
        Q_ARG(ReadingNavigationType, ReadingNavigationDefault));
}

QString Session::openBookmark(const QStringList& arguments)
{
    Pagelet page;
    if (!findPage(arguments.at(0), &page))
        return QStringLiteral("%1: no such page in the library").arg(arguments.at(0));
    Bookmark bookmark;
    bookmark.setExtraData(arguments.at(1));
    m_bookId = page.getBookId();
    if (const QString error = openView(); !error.isEmpty())
        return error;
    return invoke("renderPageletWithBookmark", Q_ARG(Pagelet, page), Q_ARG(Bookmark, bookmark),
        Q_ARG(ReadingNavigationType, ReadingNavigationDefault));
}

QString Session::openImage(const QStringList& arguments)
{
    QFile file(arguments.at(0));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
    const QByteArray bytes = file.readAll();
    m_bookId.clear(); // the image is no stored book
    if (const QString error = openView(); !error.isEmpty())
        return error;
    return invoke("renderImage", Q_ARG(QByteArray, bytes));
}

QString Session::close(const QStringList&)
{
    m_view.close();
    return QString();
}

QString Session::state(const QStringList&)
{
    ImageReaderDelegate* reader = m_view.imageReader();
    ZoomController* controller = reader ? reader->zoomController() : nullptr;
    const Volume book = m_bookId.isEmpty() ? Volume() : storedBook(m_bookId);
    SessionTracer::result(QStringLiteral("state"),
        {
            { QStringLiteral("view"), boolean(m_view.isOpen()) },
            { QStringLiteral("progressPercent"), number(m_state.progressPercent) },
            { QStringLiteral("readerOpen"), number(m_state.readerOpen) },
            { QStringLiteral("zoom"),
                controller ? number(controller->currentZoomFactor()) : null() },
            { QStringLiteral("orientation"), reader ? number(reader->orientation()) : null() },
            { QStringLiteral("stored"), book.getId().isEmpty() ? null() : volume(book) },
        });
    return QString();
}

QString Session::wait(const QStringList& arguments)
{
    int milliseconds = 0;
    if (!arguments.isEmpty() && (!toInt(arguments.at(0), &milliseconds) || milliseconds < 0))
        return badArgument(QStringLiteral("time"), arguments.at(0));
    SessionView::wait(milliseconds);
    return QString();
}
