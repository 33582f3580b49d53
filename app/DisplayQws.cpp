// The device's Qt for embedded Linux: the program is its own display server.
// Window-less commands serve a screen in memory (the VNC driver, on a display
// number of their own); read shows on the display that QWS_DISPLAY names.
#include "Display.h"

#include "Application.h"
#include "HostCompat.h"

#include <QDesktopWidget>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPixmap>
#include <QPointer>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

// Display numbers of their own for window-less runs: the tests' suites take
// the low ones.
const int firstDisplay = 100;
const int displayCount = 500;

// Qt's own folder: where libQtCore was loaded from. The SDK keeps its fonts
// in lib/fonts and its plug-ins in plugins beside lib.
QString qtLibraryFolder()
{
    Dl_info info;
    if (!dladdr(reinterpret_cast<void*>(&qVersion), &info) || !info.dli_fname)
        return QString();
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
}

// A display number that no other run of ours holds, locked for the life of
// the process; its data folder, if any, must be the user's, as Qt insists.
int claimDisplay()
{
    for (int i = 0; i < displayCount; ++i) {
        const int number = firstDisplay + (i + getpid()) % displayCount;
        const QFileInfo data(QStringLiteral("/tmp/qtembedded-%1").arg(number));
        if (data.exists() && data.ownerId() != getuid())
            continue;
        const QByteArray lock = QFile::encodeName(
            QDir::tempPath() + QStringLiteral("/tamber-display-%1-%2.lock").arg(getuid()).arg(number));
        const int fd = ::open(lock.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd < 0)
            continue;
        if (flock(fd, LOCK_EX | LOCK_NB) == 0)
            return number; // the descriptor stays open: the lock lasts as long as we do
        ::close(fd);
    }
    return -1;
}

// The memory screen of a window-less run shows no window: the program's own
// display server allocates them no region, so a repaint paints nothing. The
// widget paints into an image instead, which stands for the screen.
struct Screen
{
    QPointer<QWidget> widget;
    QImage image;
};

Screen& screen()
{
    static Screen shown;
    return shown;
}

} // namespace

namespace Display {

bool prepare(const QString& command, bool needsWindow)
{
    const QString qtFolder = qtLibraryFolder();
    if (qEnvironmentVariableIsEmpty("QT_QWS_FONTDIR")
        && QFileInfo(qtFolder + QStringLiteral("/fonts")).isDir())
        qputenv("QT_QWS_FONTDIR", QFile::encodeName(qtFolder + QStringLiteral("/fonts")));
    if (needsWindow) {
        if (!qEnvironmentVariableIsEmpty("QWS_DISPLAY"))
            return true;
        Application::warn(QStringLiteral("'%1' opens a window, and no display is available "
                                         "(QWS_DISPLAY is not set); try "
                                         "QWS_DISPLAY=VNC:0 and a VNC viewer on port 5900")
                              .arg(command));
        return false;
    }
    // Never the display of the environment: a suite or a reader may be serving it.
    const int number = claimDisplay();
    if (number < 0) {
        Application::warn(QStringLiteral("no free display number between %1 and %2")
                              .arg(firstDisplay)
                              .arg(firstDisplay + displayCount - 1));
        return false;
    }
    qputenv("QWS_DISPLAY", "VNC:size=1072x1448:depth=32:" + QByteArray::number(number));
    qputenv("QWS_KEYBOARD", "None");
    qputenv("QWS_MOUSE_PROTO", "None");
    return true;
}

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv)
{
    std::unique_ptr<QApplication> application(
        new QApplication(argc, argv, QApplication::GuiServer));
    // The image plug-ins of the Qt we run on, wherever it was unpacked.
    const QString plugins = qtLibraryFolder() + QStringLiteral("/../plugins");
    if (QFileInfo(plugins).isDir())
        QCoreApplication::addLibraryPath(QDir::cleanPath(plugins));
    return application;
}

QString windowProblem()
{
    return QString();
}

QSize availableSize()
{
    return QApplication::desktop()->availableGeometry().size();
}

void paint(QWidget* widget)
{
    screen().image = QPixmap::grabWidget(widget).toImage();
    screen().widget = widget;
}

QImage paintedImage(QWidget* widget)
{
    return screen().widget == widget ? screen().image : QImage();
}

} // namespace Display
