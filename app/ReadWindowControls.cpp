// SPDX-License-Identifier: MIT
#include "ReadWindowControls.h"

#include "ImageReaderDelegate.h"
#include "SwipeGesture.h"
#include "TapGesture.h"

#include <QAction>
#include <QMenu>
#include <QMetaObject>
#include <QWidget>

namespace {

ImageReaderDelegate* imageReader(QWidget* view)
{
    return view ? static_cast<ImageReaderDelegate*>(view->qt_metacast("ImageReaderDelegate"))
                : nullptr;
}

} // namespace

ReadWindowControls::ReadWindowControls(QWidget* view, QWidget* screen, QWidget* window)
    : QObject(window)
    , m_view(view)
    , m_screen(screen)
    , m_menu(new QMenu(window))
{
    m_dogEar = m_menu->addAction(QStringLiteral("Dog ear"));
    m_dogEar->setCheckable(true);
    // toggled would also fire when the menu is set up to show the page's state.
    connect(m_dogEar, SIGNAL(triggered(bool)), this, SLOT(setDogEar(bool)));
    m_menu->addSeparator();
    connect(m_menu->addAction(QStringLiteral("Fit width")), SIGNAL(triggered()), this,
        SLOT(fitWidth()));
    connect(m_menu->addAction(QStringLiteral("Fit height")), SIGNAL(triggered()), this,
        SLOT(fitHeight()));
    m_menu->addSeparator();
    connect(m_menu->addAction(QStringLiteral("Close")), SIGNAL(triggered()), this,
        SIGNAL(closeRequested()));
}

ReadWindowControls::Action ReadWindowControls::tapAction(const QPoint& position, int screenWidth)
{
    if (position.x() < screenWidth / 3)
        return PreviousPage;
    if (position.x() >= screenWidth - screenWidth / 3)
        return NextPage;
    return OpenMenu;
}

ReadWindowControls::Action ReadWindowControls::swipeAction(
    QSwipeGesture::SwipeDirection horizontal, QSwipeGesture::SwipeDirection vertical)
{
    // The horizontal direction decides a diagonal swipe. In landscape the view
    // has turned a sideways swipe on the upright screen into an upward or
    // downward one: upward goes on, as a swipe to the left does.
    switch (horizontal) {
    case QSwipeGesture::Left:
        return NextPage;
    case QSwipeGesture::Right:
        return PreviousPage;
    default:
        break;
    }
    switch (vertical) {
    case QSwipeGesture::Up:
        return NextPage;
    case QSwipeGesture::Down:
        return PreviousPage;
    default:
        return NoAction;
    }
}

void ReadWindowControls::tap(TapGesture* tap)
{
    const QPoint global = tap->position().toPoint();
    act(tapAction(m_screen->mapFromGlobal(global), m_screen->width()), global);
}

void ReadWindowControls::swipe(SwipeGesture* swipe)
{
    act(swipeAction(swipe->horizontalDirection(), swipe->verticalDirection()), QPoint());
}

void ReadWindowControls::act(Action action, const QPoint& globalPosition)
{
    if (!m_view)
        return;
    switch (action) {
    case PreviousPage:
        QMetaObject::invokeMethod(m_view, "goToPrevPage");
        break;
    case NextPage:
        QMetaObject::invokeMethod(m_view, "goToNextPage");
        break;
    case OpenMenu:
        m_dogEar->setChecked(hasDogEar());
        // Not exec(): this runs inside the delivery of a gesture.
        m_menu->popup(globalPosition);
        break;
    case NoAction:
        break;
    }
}

bool ReadWindowControls::hasDogEar() const
{
    bool hasDogEar = false;
    QMetaObject::invokeMethod(m_view, "checkDogEar", Q_ARG(bool&, hasDogEar));
    return hasDogEar;
}

void ReadWindowControls::setDogEar(bool on)
{
    if (m_view)
        QMetaObject::invokeMethod(m_view, on ? "addDogEar" : "removeDogEar");
}

void ReadWindowControls::fitWidth()
{
    if (ImageReaderDelegate* reader = imageReader(m_view))
        reader->fitWidth();
}

void ReadWindowControls::fitHeight()
{
    if (ImageReaderDelegate* reader = imageReader(m_view))
        reader->fitHeight();
}
