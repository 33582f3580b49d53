// SPDX-License-Identifier: MIT
// The device's Qt for embedded Linux: the program is its own display server.
// Window-less commands serve a screen in memory (the VNC driver, on a display
// number of their own); read shows on the display that QWS_DISPLAY names.
#include "Display.h"

#include "Application.h"
#include "HostCompat.h"

#include <QCryptographicHash>
#include <QDesktopWidget>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QRegExp>
#include <QWSServer>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

namespace {

// Display numbers of their own for window-less runs: the tests' suites take
// the low ones.
const int firstDisplay = 100;
const int displayCount = 500;
const QSize screenSize(1072, 1448);
const int screenDepth = 32;

// Where Qt keeps the key of a shared memory or a semaphore named key: a file
// whose name it derives from the key, and whose inode the key is made from.
QByteArray qtKeyFile(const QString& key, const char* prefix)
{
    QString letters = key;
    letters.remove(QRegExp(QStringLiteral("[^A-Za-z]")));
    return QFile::encodeName(QDir::tempPath() + QLatin1Char('/') + QLatin1String(prefix) + letters
        + QLatin1String(QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha1).toHex()));
}

// The key files of the VNC screen of display number, as Qt 4.8 names them
// after the display and the screen's size in bytes. These names are Qt's
// private ones: makeApplication checks them against the files the server
// made, and says so when they differ.
struct ScreenKeys
{
    QByteArray memoryFile;
    QByteArray semaphoreFile;
};

ScreenKeys screenKeys(int number)
{
    const int bytes = screenSize.width() * screenSize.height() * screenDepth / 8;
    const QString key
        = QStringLiteral("/tmp/qtembedded-%1/QtEmbedded-%1_vnc_%1_%2").arg(number).arg(bytes);
    return { qtKeyFile(key, "qipc_sharedmemory_"), qtKeyFile(key, "qipc_systemsem_") };
}

// The display this run serves on its own, or -1 when it shows on the
// environment's.
int ownDisplay = -1;

// A run that was killed leaves its screen's shared memory and the semaphore
// that guards it, which Qt finds again by the same key: the next server of
// that display would take the memory over with a warning, or wait for ever
// on a semaphore that the run was killed holding. The display is ours (its
// lock says so), so whatever it left is removed, with the key files.
void removeStaleScreen(int number)
{
    const ScreenKeys keys = screenKeys(number);
    const key_t memory = ftok(keys.memoryFile.constData(), 'Q');
    const int segment = memory == -1 ? -1 : shmget(memory, 0, 0);
    if (segment != -1)
        shmctl(segment, IPC_RMID, nullptr);
    const key_t guard = ftok(keys.semaphoreFile.constData(), 'Q');
    const int semaphore = guard == -1 ? -1 : semget(guard, 1, 0);
    if (semaphore != -1)
        semctl(semaphore, 0, IPC_RMID);
    ::unlink(keys.memoryFile.constData());
    ::unlink(keys.semaphoreFile.constData());
}

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

// What a widget painted, kept as a screen keeps it: a paint covers only what
// it paints, and the rest stays as the last paint left it.
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
    removeStaleScreen(number);
    ownDisplay = number;
    qputenv("QWS_DISPLAY",
        QStringLiteral("VNC:size=%1x%2:depth=%3:%4")
            .arg(screenSize.width())
            .arg(screenSize.height())
            .arg(screenDepth)
            .arg(number)
            .toLatin1());
    qputenv("QWS_KEYBOARD", "None");
    qputenv("QWS_MOUSE_PROTO", "None");
    return true;
}

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv)
{
    std::unique_ptr<QApplication> application(
        new QApplication(argc, argv, QApplication::GuiServer));
    // The server starts with painting off; as the device's, it paints the
    // windows it shows.
    QWSServer::instance()->enablePainting(true);
    // Had Qt named the screen's keys otherwise, a killed run's screen would
    // stay behind unnoticed: say so while the run can still be looked at.
    if (ownDisplay >= 0) {
        const ScreenKeys keys = screenKeys(ownDisplay);
        if (!QFile::exists(QFile::decodeName(keys.memoryFile))
            || !QFile::exists(QFile::decodeName(keys.semaphoreFile)))
            Application::warn(QStringLiteral("the screen of display %1 has no key files where "
                                             "this build looks for them; a killed run's screen "
                                             "will not be removed")
                                  .arg(ownDisplay));
    }
    // The image plug-ins of the Qt we run on, wherever it was unpacked.
    const QString plugins = qtLibraryFolder() + QStringLiteral("/../plugins");
    if (QFileInfo(plugins).isDir())
        QCoreApplication::addLibraryPath(QDir::cleanPath(plugins));
    return application;
}

QString variable()
{
    return QStringLiteral("QWS_DISPLAY");
}

QString variableHelp()
{
    return QStringLiteral("The display that read shows its window on, such as "
                          "VNC:size=1072x1448:depth=32:0 (then a VNC viewer on port 5900). The "
                          "commands without a window serve a display of their own and need "
                          "none.");
}

QString windowProblem()
{
    return QString();
}

QSize availableSize()
{
    return QApplication::desktop()->availableGeometry().size();
}

bool isShown(QWidget* window)
{
    // Mapped as soon as it is shown; the server grants its region later.
    return !window->visibleRegion().isEmpty();
}

void paint(QWidget* widget)
{
    Screen& shown = screen();
    if (shown.widget != widget || shown.image.size() != widget->size()) {
        shown.image = QImage(widget->size(), QImage::Format_RGB32);
        shown.image.fill(qRgb(255, 255, 255));
        shown.widget = widget;
    }
    // Without its background: what the widget leaves unpainted stays.
    widget->render(&shown.image, QPoint(), QRegion(), QWidget::DrawChildren);
}

QImage paintedImage(QWidget* widget)
{
    // The server's window surfaces cannot be read back, and the widget may
    // have painted itself since (a zoom repaints at once): it paints again
    // onto what it left, which shows what it last showed.
    paint(widget);
    return screen().image;
}

} // namespace Display
