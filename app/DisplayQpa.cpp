// SPDX-License-Identifier: MIT
// Qt 5: a platform plug-in; window-less commands draw offscreen.
#include "Display.h"

#include "Application.h"

#include <QBackingStore>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace Display {

bool prepare(const QString& command, bool needsWindow)
{
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return true;
    // Commands without a window never need a display, not even when one is there.
    if (!needsWindow) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return true;
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        Application::warn(QStringLiteral("'%1' opens a window, and no display is available "
                                         "(DISPLAY is not set); try it under xvfb-run")
                              .arg(command));
        return false;
    }
    return true;
}

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv)
{
    return std::make_unique<QApplication>(argc, argv);
}

QString variable()
{
    return QStringLiteral("QT_QPA_PLATFORM");
}

QString variableHelp()
{
    return QStringLiteral("Qt's platform. When it is unset, the commands without a window use "
                          "\"offscreen\" and need no display.");
}

QString windowProblem()
{
    // A window on these platforms would never show, and reading would never end.
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("offscreen") || platform == QLatin1String("minimal"))
        return QStringLiteral("the \"%1\" platform cannot show it").arg(platform);
    return QString();
}

QSize availableSize()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry().size() : QSize();
}

bool isShown(QWidget* window)
{
    return window->testAttribute(Qt::WA_Mapped);
}

void paint(QWidget* widget)
{
    widget->repaint();
}

QImage paintedImage(QWidget* widget)
{
    // The window's backing store holds the pixels as they were painted.
    QWidget* window = widget->window();
    QBackingStore* store = window->backingStore();
    QPaintDevice* device = store ? store->paintDevice() : nullptr;
    if (!device || device->devType() != QInternal::Image)
        return widget->grab().toImage();
    const auto* image = static_cast<const QImage*>(device);
    const qreal ratio = image->devicePixelRatio();
    const QRect area(widget->mapTo(window, QPoint()), widget->size());
    return image->copy(QRect(area.topLeft() * ratio, area.size() * ratio));
}

} // namespace Display
