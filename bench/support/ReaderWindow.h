// SPDX-License-Identifier: MIT
#ifndef READERWINDOW_H
#define READERWINDOW_H

#include "PluginState.h"
#include "Volume.h"

#include <QPoint>
#include <QSize>

class ComicsReader;
class QWidget;

// The reading view in a shown window of the screen's size, held as the host's
// main window holds it.
class ReaderWindow
{
public:
    explicit ReaderWindow(const QSize& screen);
    ~ReaderWindow();

    // Opens a stored book at its first page and paints it.
    void open(const Volume& book);
    ComicsReader* view() const;
    // A synchronous repaint, as the host's window system asks for one.
    void paint();
    // A drag of the view's page by offset, and the repaint that it asks for.
    void drag(const QPoint& offset);
    // The page that the view last decoded, -1 before any.
    int renderedPage() const;
    QSize pageImageSize() const;

    ReaderWindow(const ReaderWindow&) = delete;
    ReaderWindow& operator=(const ReaderWindow&) = delete;

private:
    PluginState state;
    QWidget* container;
    class ShownReader;
    ShownReader* reader;
};

#endif
