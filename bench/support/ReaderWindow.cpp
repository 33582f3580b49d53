// SPDX-License-Identifier: MIT
#include "ReaderWindow.h"

#include "BenchCompat.h"
#include "ComicsReader.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QWidget>

// The view with what it has painted in sight.
class ReaderWindow::ShownReader : public ComicsReader
{
public:
    using ComicsReader::ComicsReader;
    using ComicsReader::pageImage;
    using ComicsReader::renderedPage;
};

ReaderWindow::ReaderWindow(const QSize& screen)
    : container(new QWidget)
{
    container->resize(screen);
    auto* handle = new QWidget(container);
    handle->hide();
    container->show();
    // Qt paints only windows that the platform has exposed.
    QElapsedTimer timer;
    timer.start();
    while (!container->testAttribute(Qt::WA_Mapped) && timer.elapsed() < 5000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);

    // Shown, but painted only once open() has given it a book: a paint without
    // one fails and closes the window.
    reader = new ShownReader(handle, &state);
    reader->resize(screen);
    reader->show();
}

ReaderWindow::~ReaderWindow()
{
    delete container;
}

void ReaderWindow::open(const Volume& book)
{
    reader->renderVolume(book, ReadingNavigationDefault);
    paint();
}

ComicsReader* ReaderWindow::view() const
{
    return reader;
}

void ReaderWindow::paint()
{
    BenchCompat::paint(reader);
}

void ReaderWindow::drag(const QPoint& offset)
{
    reader->processOffset(offset);
    if (!BenchCompat::repaintsItself())
        paint();
}

int ReaderWindow::renderedPage() const
{
    return reader->renderedPage;
}

QSize ReaderWindow::pageImageSize() const
{
    return reader->pageImage.size();
}
