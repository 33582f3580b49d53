// SPDX-License-Identifier: MIT
// Session: the commands that act on the open reading view: navigation, touch,
// zoom, painting, saving and dog ears.

#include "Session.h"

#include "ComicsReader.h"
#include "DogEarManager.h"
#include "GuidedReadingMixin.h"
#include "HostTrace.h"
#include "ImageReaderDelegate.h"
#include "ZoomController.h"

#include <QHash>
#include <QMetaEnum>
#include <QWidget>

using namespace TraceJson;

namespace {

QString noImageReader()
{
    return QStringLiteral("the view is no ImageReaderDelegate");
}

QList<Bookmark> storedDogEars()
{
    HostTrace::Suppress ownBehalf;
    return DogEarManager::sharedInstance()->getBookmarks();
}

} // namespace

QString Session::next(const QStringList&)
{
    return invoke("goToNextPage");
}

QString Session::prev(const QStringList&)
{
    return invoke("goToPrevPage");
}

QString Session::goTo(const QStringList& arguments)
{
    int page = 0;
    if (!toInt(arguments.at(0), &page))
        return badArgument(QStringLiteral("page number"), arguments.at(0));
    return invoke("goToPage", Q_ARG(int, page));
}

QString Session::chapter(const QStringList& arguments)
{
    int index = 0;
    if (!toInt(arguments.at(0), &index))
        return badArgument(QStringLiteral("chapter index"), arguments.at(0));
    GuidedReadingMixin* guided = m_view.guidedReading();
    if (!guided)
        return QStringLiteral("the view is no GuidedReadingMixin");
    guided->goToChapter(index);
    return QString();
}

QString Session::page(const QStringList& arguments)
{
    int index = 0;
    if (!toInt(arguments.at(0), &index))
        return badArgument(QStringLiteral("page index"), arguments.at(0));
    ComicsReader* reader = m_view.reader();
    if (!reader)
        return QStringLiteral("the view is no ComicsReader");
    reader->setPage(index);
    return QString();
}

namespace {

// The meta-object of Qt's namespace, which QObject keeps to itself under Qt 4.
struct QtNamespace : QObject
{
    static const QMetaObject& enums() { return staticQtMetaObject; }
};

} // namespace

QString Session::key(const QStringList& arguments)
{
    const QMetaObject& qt = QtNamespace::enums();
    const QMetaEnum keys = qt.enumerator(qt.indexOfEnumerator("Key"));
    const QByteArray name = arguments.at(0).toLatin1();
    // Qt's key codes are never negative; -1 is "no such key".
    int value = keys.keyToValue("Key_" + name);
    if (value < 0)
        value = keys.keyToValue(name);
    if (value < 0)
        return badArgument(QStringLiteral("key"), arguments.at(0));
    m_view.sendKey(value);
    return QString();
}

QString Session::tap(const QStringList& arguments)
{
    static const struct
    {
        const char* name;
        Qt::GestureState state;
    } states[] = {
        { "started", Qt::GestureStarted },
        { "updated", Qt::GestureUpdated },
        { "finished", Qt::GestureFinished },
        { "canceled", Qt::GestureCanceled },
    };
    const QString name = arguments.value(0, QStringLiteral("finished"));
    for (const auto& state : states) {
        if (name == QLatin1String(state.name)) {
            m_view.sendTap(state.state);
            return QString();
        }
    }
    return badArgument(QStringLiteral("gesture state"), name);
    return QString();
}

QString Session::swipe(const QStringList& arguments)
{
    const QStringList names = QStringList() << QStringLiteral("left") << QStringLiteral("right")
                                            << QStringLiteral("up") << QStringLiteral("down");
    const QSwipeGesture::SwipeDirection directions[]
        = { QSwipeGesture::Left, QSwipeGesture::Right, QSwipeGesture::Up, QSwipeGesture::Down };
    QSwipeGesture::SwipeDirection horizontal = QSwipeGesture::NoDirection;
    QSwipeGesture::SwipeDirection vertical = QSwipeGesture::NoDirection;
    for (const QString& part : arguments.at(0).split(QLatin1Char('+'))) {
        const int index = names.indexOf(part);
        const QSwipeGesture::SwipeDirection direction
            = index < 0 ? QSwipeGesture::NoDirection : directions[index];
        QSwipeGesture::SwipeDirection& axis
            = direction == QSwipeGesture::Left || direction == QSwipeGesture::Right ? horizontal
                                                                                    : vertical;
        // One direction per axis at most.
        if (direction == QSwipeGesture::NoDirection || axis != QSwipeGesture::NoDirection)
            return badArgument(QStringLiteral("swipe direction"), arguments.at(0));
        axis = direction;
    }
    m_view.sendSwipe(horizontal, vertical);
    return QString();
}

QString Session::drag(const QStringList& arguments)
{
    int dx = 0;
    int dy = 0;
    if (!toInt(arguments.at(0), &dx) || !toInt(arguments.at(1), &dy))
        return badArgument(QStringLiteral("drag"), arguments.join(QStringLiteral(" ")));
    m_view.sendDrag(QPoint(dx, dy));
    return QString();
}

QString Session::pinch(const QStringList& arguments)
{
    double scale = 0;
    if (!toReal(arguments.at(0), &scale))
        return badArgument(QStringLiteral("pinch scale"), arguments.at(0));
    m_view.sendPinch(scale);
    return QString();
}

QString Session::zoom(const QStringList& arguments)
{
    double factor = 0;
    if (!toReal(arguments.at(0), &factor))
        return badArgument(QStringLiteral("zoom factor"), arguments.at(0));
    ImageReaderDelegate* reader = m_view.imageReader();
    ZoomController* controller = reader ? reader->zoomController() : nullptr;
    if (!controller)
        return QStringLiteral("the view has no zoom controller");
    HostTrace::Suppress ownBehalf;
    controller->setZoomFactor(factor);
    return QString();
}

QString Session::fitWidth(const QStringList&)
{
    ImageReaderDelegate* reader = m_view.imageReader();
    if (!reader)
        return noImageReader();
    reader->fitWidth();
    return QString();
}

QString Session::fitHeight(const QStringList&)
{
    ImageReaderDelegate* reader = m_view.imageReader();
    if (!reader)
        return noImageReader();
    reader->fitHeight();
    return QString();
}

QString Session::rotate(const QStringList&)
{
    ImageReaderDelegate* reader = m_view.imageReader();
    if (!reader)
        return noImageReader();
    reader->rotate();
    return QString();
}

QString Session::orientation(const QStringList& arguments)
{
    int value = 0;
    if (!toInt(arguments.at(0), &value))
        return badArgument(QStringLiteral("orientation"), arguments.at(0));
    ImageReaderDelegate* reader = m_view.imageReader();
    if (!reader)
        return noImageReader();
    reader->setOrientation(ScreenOrientation(value));
    return QString();
}

QString Session::paint(const QStringList&)
{
    m_view.paint();
    return QString();
}

QString Session::screenshot(const QStringList& arguments)
{
    const QImage image = m_view.screenshot();
    if (image.isNull())
        return QStringLiteral("the view has not been painted yet");
    QString error;
    SessionView::writeImage(image, arguments.at(0), &error);
    return error;
}

QString Session::save(const QStringList&)
{
    Volume* volumeToUpdate = nullptr;
    return invoke("saveBookmark", Q_ARG(bool, false), Q_ARG(Volume*, volumeToUpdate));
}

QString Session::font(const QStringList&)
{
    return invoke("fontSettingsChanged");
}

QString Session::dogEarAdd(const QStringList&)
{
    return invoke("addDogEar");
}

QString Session::dogEarRemove(const QStringList&)
{
    return invoke("removeDogEar");
}

QString Session::dogEarRemoveRecord(const QStringList& arguments)
{
    QList<Bookmark> dogEars = storedDogEars();
    for (Bookmark& dogEar : dogEars) {
        if (dogEar.getExtraData() == arguments.at(0))
            return invoke("removeDogEar", Q_ARG(Bookmark&, dogEar));
    }
    return QStringLiteral("no stored dog ear has the extra data \"%1\"").arg(arguments.at(0));
}

QString Session::dogEarCheck(const QStringList& arguments)
{
    const QString flag = arguments.value(0, QStringLiteral("false"));
    if (flag != QLatin1String("true") && flag != QLatin1String("false"))
        return badArgument(QStringLiteral("flag"), flag);
    bool hasDogEar = flag == QLatin1String("true");
    if (const QString error = invoke("checkDogEar", Q_ARG(bool&, hasDogEar)); !error.isEmpty())
        return error;
    SessionTracer::result(
        QStringLiteral("dogear check"), { { QStringLiteral("hasDogEar"), boolean(hasDogEar) } });
    return QString();
}

QString Session::dogEarLoaded(const QStringList&)
{
    bool isLoaded = false;
    if (const QString error = invoke("areDogEarsLoaded", Q_ARG(bool&, isLoaded)); !error.isEmpty())
        return error;
    SessionTracer::result(
        QStringLiteral("dogear loaded"), { { QStringLiteral("isLoaded"), boolean(isLoaded) } });
    return QString();
}

QString Session::dogEarKey(const QStringList& arguments)
{
    Bookmark dogEar;
    dogEar.setExtraData(arguments.at(0));
    int key = 0;
    if (const QString error = invoke("getDogEarKey", Q_ARG(int&, key), Q_ARG(Bookmark, dogEar));
        !error.isEmpty())
        return error;
    SessionTracer::result(QStringLiteral("dogear key"), { { QStringLiteral("key"), number(key) } });
    return QString();
}

QString Session::dogEarList(const QStringList&)
{
    if (DogEarManager::sharedInstance()->tableVolumeId().isEmpty())
        return QStringLiteral("no book's dog ears are open");
    QVector<QByteArray> items;
    for (const Bookmark& dogEar : storedDogEars())
        items << bookmark(dogEar);
    SessionTracer::result(
        QStringLiteral("dogear list"), { { QStringLiteral("bookmarks"), array(items) } });
    return QString();
}
