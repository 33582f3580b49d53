// SPDX-License-Identifier: MIT
#ifndef BENCHCOMPAT_H
#define BENCHCOMPAT_H

// Where the device's Qt 4.8 and the desktop's Qt 5 differ, for the benchmark
// programs. The plug-in's and the host's differences are in QtCompat.h and
// HostCompat.h, and the temporary folder in the suites' TestSupport.h; this
// adds the benchmarks' own.

#include "QtCompat.h"

#include <QImage>
#include <QString>
#include <QtGlobal>

class QWidget;

namespace BenchCompat {

// Removes the folder and all it holds (Qt 4's QDir cannot remove a tree).
bool removeTree(const QString& path);

inline qint64 imageBytes(const QImage& image)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    return image.sizeInBytes();
#else
    return image.byteCount();
#endif
}

// A program on the PATH, or an empty string.
QString findExecutable(const QString& name);

// Paints the widget now, where the window system shows it. Qt 5 repaints
// into the window's backing store. Under Qt 4 the program is its own display
// server, which gives a window-less run's windows no region to repaint: the
// widget paints into an image of its size that stands for the screen.
void paint(QWidget* widget);

// Whether a repaint of the widget that its own code asks for reaches the
// screen; where it does not, the caller paints after it with paint().
bool repaintsItself();

} // namespace BenchCompat

#endif
