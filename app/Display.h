// SPDX-License-Identifier: MIT
#ifndef DISPLAY_H
#define DISPLAY_H

#include <QApplication>
#include <QImage>
#include <QSize>
#include <QString>

#include <memory>

// Where Qt draws. The desktop's Qt draws through a platform plug-in; the
// device's Qt for embedded Linux is its own display server. Either way a
// command without a window never needs a display of the user's, and any
// number of them run side by side. One source per Qt implements this.
namespace Display {

// Before the application object exists: chooses where the command draws.
// False, after saying why, when it opens a window and there is nowhere to
// show one.
bool prepare(const QString& command, bool needsWindow);
// The application object that draws there.
std::unique_ptr<QApplication> makeApplication(int& argc, char** argv);
// The environment variable that names where windows show, and what it does,
// for the help.
QString variable();
QString variableHelp();
// Why windows cannot be shown where the program draws, or empty when they can.
QString windowProblem();
// The room for a window on the display, or an invalid size when unknown.
QSize availableSize();
// Whether the window is on the screen, where a repaint reaches it: the
// platform exposed it, or the display server gave it a region.
bool isShown(QWidget* window);
// Paints the widget now, onto the screen.
void paint(QWidget* widget);
// What the widget last painted, as the screen has it.
QImage paintedImage(QWidget* widget);

} // namespace Display

#endif
