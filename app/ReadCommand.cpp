#include "ReadCommand.h"

#include "Application.h"
#include "BookArgument.h"
#include "GestureRegistration.h"
#include "Library.h"
#include "PluginLoader.h"
#include "ReadWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QRegularExpression>
#include <QScreen>

namespace {

const QSize deviceScreen(1072, 1448);

// "WxH" with both sides positive.
bool parseSize(const QString& text, QSize* size)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return false;
    *size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
    return !size->isEmpty();
}

// The device's screen, shrunk to fit the display when that is smaller.
QSize defaultScreen()
{
    const QScreen* display = QGuiApplication::primaryScreen();
    if (!display)
        return deviceScreen;
    // Leaves room for the window's frame.
    const QSize room = display->availableGeometry().size() * 0.9;
    if (room.width() >= deviceScreen.width() && room.height() >= deviceScreen.height())
        return deviceScreen;
    return deviceScreen.scaled(room, Qt::KeepAspectRatio);
}

} // namespace

QString ReadCommand::name() const
{
    return QStringLiteral("read");
}

QString ReadCommand::synopsis() const
{
    return QStringLiteral("BOOK [--size WxH]");
}

QString ReadCommand::summary() const
{
    return QStringLiteral("Opens a book in a window at its saved position, to read");
}

bool ReadCommand::needsWindow() const
{
    return true;
}

void ReadCommand::addOptions(QCommandLineParser& parser) const
{
    parser.addOption(QCommandLineOption(QStringLiteral("size"),
        QStringLiteral("The emulated screen (default %1x%2, shrunk to fit the display).")
            .arg(deviceScreen.width())
            .arg(deviceScreen.height()),
        QStringLiteral("WxH")));
    parser.addPositionalArgument(QStringLiteral("BOOK"),
        QStringLiteral("A book id as stored, or the path of the book. In the window, the "
                       "arrow and page keys and clicks in the left or right third turn pages, "
                       "a click in the middle opens a menu, a flick turns a page, a drag pans "
                       "a zoomed page, Ctrl+wheel zooms, and Escape saves and quits."));
}

int ReadCommand::run(Application& app, const QCommandLineParser& parser) const
{
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 1)
        return Application::usageError(QStringLiteral("read needs one BOOK"), this);
    QSize screen = defaultScreen();
    if (parser.isSet(QStringLiteral("size"))
        && !parseSize(parser.value(QStringLiteral("size")), &screen))
        return Application::usageError(QStringLiteral("--size takes WxH, such as 1072x1448"), this);
    // A window on these platforms would never show, and reading would never end.
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("offscreen") || platform == QLatin1String("minimal")) {
        Application::warn(
            QStringLiteral("read opens a window, which the \"%1\" platform cannot show")
                .arg(platform));
        return Application::UsageError;
    }
    if (!app.openLibrary())
        return Application::UsageError;
    PluginLoader* loader = app.loadPlugin();
    if (!loader)
        return Application::UsageError;

    const QString id = BookArgument::resolve(arguments.first());
    if (id.isEmpty()) {
        Application::warn(QStringLiteral("%1: no such book in the library").arg(arguments.first()));
        return Application::Failed;
    }

    // Before the view exists: it grabs the recognizers' gesture types.
    registerGestureRecognizers();
    ReadWindow window(loader->plugin(), screen);
    if (!window.open(Library::book(id)))
        return Application::Failed;
    window.show();
    window.activateWindow();
    window.view()->setFocus(Qt::OtherFocusReason);
    QApplication::exec();
    return window.exitStatus();
}
