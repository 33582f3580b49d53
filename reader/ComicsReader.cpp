// SPDX-License-Identifier: MIT
#include "ComicsReader.h"

#include "ComicArchive.h"
#include "DogEarManager.h"
#include "GestureRecognizers.h"
#include "MainWindowController.h"
#include "PageletManager.h"
#include "PluginState.h"
#include "QByteArrayArchive.h"
#include "SocialEventType.h"
#include "VolumeManager.h"
#include "ZoomController.h"

#include <QApplication>
#include <QDateTime>
#include <QDebug>
#include <QDesktopWidget>
#include <QPointer>
#include <QUrl>

#include <cmath>
#include <limits>

namespace {

enum ReadStatus { Reading = 1, Finished = 2 };

// The 1-based number of a 0-based page; the last int stays the last int.
int pageNumber(int page)
{
    return page < std::numeric_limits<int>::max() ? page + 1 : page;
}

// Progress of the page shown, counting it as read: single precision, truncated.
int progressPercent(int page, int pageCount)
{
    const float percent = float(qint64(page) + 1) * 100.0f / float(pageCount);
    // A book without a page count gives an infinite or NaN quotient: write 0.
    if (!std::isfinite(percent))
        return 0;
    // Clamped so that the conversion to int stays defined.
    if (percent >= 2147483648.0f)
        return std::numeric_limits<int>::max();
    if (percent < -2147483648.0f)
        return std::numeric_limits<int>::min();
    return int(percent);
}

} // namespace

ComicsReader::ComicsReader(QWidget* parent, PluginState* state)
    : QWidget(parent ? parent->parentWidget() : nullptr)
    , currentPage(0)
    , rotation(-1)
    , archive(nullptr)
    , pluginState(state)
    , renderedPage(-1)
    , zoomControl(nullptr)
    , panX(0)
    , panY(0)
{
    if (pluginState)
        pluginState->readerOpen = 1;

    // The paint handler covers the whole view: white after a decode, and the page
    // over what the last paint left otherwise. Qt must not erase it in between,
    // or the margins beside a narrow page show the container's colour.
    setAttribute(Qt::WA_OpaquePaintEvent);

    const QDesktopWidget* screen = QApplication::desktop();
    setGeometry(0, 0, screen->width(), screen->height());
    setFocus(Qt::OtherFocusReason);

    connect(DogEarManager::sharedInstance(), SIGNAL(getDogEarKey(int&, const Bookmark&)), this,
        SLOT(getDogEarKey(int&, const Bookmark&)));

    // The host reads these to decide what to draw around the view.
    setProperty("showTitle", false);
    setProperty("showIndicators", false);
    setProperty("showStatusBottomLine", false);

    grabGesture(TapGestureRecognizer::_gestureType);
    grabGesture(DragGestureRecognizer::_gestureType);
    grabGesture(SwipeGestureRecognizer::_gestureType);
    grabGesture(PinchGestureRecognizer::_gestureType);
    setGestureDelegate(this);

    // Set again in the order of the wiring, deliberately, as are the pans below.
    currentPage = 0;
    renderedPage = -1;

    zoomControl = new ZoomController(this, 1.0, 3.0, 1.0);
    connect(
        zoomControl, SIGNAL(zoomFactorUpdated(double, double)), this, SLOT(onUserZoomChanged()));
    connect(zoomControl, SIGNAL(zoomFactorUpdatedWithOffset(double, double, QPointF)), this,
        SLOT(onUserZoomChanged()));
    setZoomController(zoomControl);

    panX = 0;
    panY = 0;
}

ComicsReader::~ComicsReader()
{
    delete archive;
}

ZoomController* ComicsReader::zoomController() const
{
    return zoomControl;
}

ScreenOrientation ComicsReader::orientation() const
{
    return ScreenOrientation(rotation);
}

void ComicsReader::renderVolume(const Volume& volume, ReadingNavigationType type)
{
    emit setHeaderText(volume.getTitle());

    pages = PageletManager::retrieveByBookId(volume.getId(), QString());
    if (pages.isEmpty()) {
        qDebug() << "No comics for" << volume.getId();
        return;
    }

    if (type == ReadingNavigationRestore) {
        const QString bookmarked = volume.bookmarkedPageId();
        for (int i = 0; i < pages.size(); ++i) {
            if (pages.at(i).getId() == bookmarked) {
                const Pagelet page = pages.at(i);
                renderPagelet(page, ReadingNavigationRestore);
                return;
            }
        }
    }
    const Pagelet first = pages.first();
    renderPagelet(first, type);
}

void ComicsReader::renderPagelet(const Pagelet& content, ReadingNavigationType)
{
    volume = VolumeManager::getById(content.getBookId(), QString());
    // A view serves one book: pages already held are kept, whatever book they are of.
    if (pages.isEmpty())
        pages = PageletManager::retrieveByBookId(volume.getId(), QString());
    currentPage = content.getVolumeIndex();

    zoomControl->setAnalyticsEventInfo(EventType_ReadingViewZoom, volume, QUrl());
    DogEarManager::sharedInstance()->createTable(volume.getId(), true);

    setPage(currentPage);
    emit doneLoading();
    emit allHighlightsLoaded();
}

void ComicsReader::renderPageletWithBookmark(
    const Pagelet& pagelet, const Bookmark& bookmark, ReadingNavigationType type)
{
    renderPagelet(pagelet, type);
    // The jump comes after doneLoading, deliberately.
    setPage(bookmark.getExtraData().toInt(nullptr, 10));
}

void ComicsReader::renderImage(const QByteArray& imageData)
{
    // Replaces the pointer without deleting, deliberately: meant for a fresh view.
    archive = new QByteArrayArchive(imageData);
    renderPagelet(Pagelet(), ReadingNavigationRestore);
}

void ComicsReader::setPage(int page)
{
    panX = 0;
    panY = 0;
    volume.setReadStatus(Reading);
    currentPage = page;

    emit setChapterIndex(page);
    // The footer's title is always empty.
    emit footerEvent(QString(), pageNumber(page), volume.pageCount());

    if (pluginState)
        pluginState->progressPercent = progressPercent(page, volume.pageCount());
    update();
}

void ComicsReader::goToNextPage()
{
    if (qint64(currentPage) + 1 < volume.pageCount()) {
        setPage(currentPage + 1);
        return;
    }

    // The end of the book: finished, saved at the first page on purpose so that
    // it reopens at its start, and closed. No signal, no repaint.
    volume.setReadStatus(Finished);
    const int shownPage = currentPage;
    currentPage = 0;
    saveBookmark(false, nullptr);
    QPointer<ComicsReader> self(this);
    MainWindowController::sharedInstance()->clear();
    // The host may have deleted the view in clear().
    if (self)
        currentPage = shownPage;
}

void ComicsReader::goToPrevPage()
{
    if (currentPage < 1)
        return;
    setPage(currentPage - 1);
}

void ComicsReader::goToPage(int page)
{
    if (page < 1 || page > volume.pageCount())
        return;
    setPage(page - 1);
}

void ComicsReader::goToChapter(int index)
{
    // Bounded by the page records, not the book's page count.
    if (index < 0 || index >= pages.size())
        return;
    setPage(index);
}

void ComicsReader::saveBookmark(bool, Volume*)
{
    // Both arguments are ignored on purpose: the position always goes to the store.
    if (currentPage < 0 || currentPage >= pages.size())
        return;

    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QString pageId = pages.at(currentPage).getId();
    const QString bookId = volume.getId();
    const int pageCount = volume.pageCount();
    // Counts from 0, so the last page never saves 100. A record without a page
    // count saves 0 rather than dividing by zero.
    const int progress = pageCount != 0 ? 100 * currentPage / pageCount : 0;
    VolumeManager::updateBookmark(bookId, pageId, 0, 0, progress, now, QString());

    const bool finished = volume.isFinished() || pages.size() == 1;
    VolumeManager::updateReadingStatus(bookId, finished ? Finished : Reading, QString());
}

void ComicsReader::fontSettingsChanged()
{
    emit doneLoading();
}

void ComicsReader::addDogEar()
{
    const int pageCount = volume.pageCount();
    // Integer division, so 0.0 on every page of the book; kept deliberately.
    const double progress = pageCount != 0 ? double(currentPage / pageCount) : 0.0;
    DogEarManager::sharedInstance()->addDogEar(currentPage, pages.value(currentPage).getId(),
        volume.getId(), QString(), currentPage, 0, QString::number(currentPage, 10), progress,
        QDateTime::currentDateTimeUtc());
}

void ComicsReader::removeDogEar()
{
    DogEarManager::sharedInstance()->removeDogEar(currentPage);
}

void ComicsReader::removeDogEar(Bookmark& dogEar)
{
    DogEarManager::sharedInstance()->removeDogEar(dogEar);
}

void ComicsReader::checkDogEar(bool& hasDogEar)
{
    // Only ever raises the flag: the caller sets it first.
    const QList<Bookmark> bookmarks = DogEarManager::sharedInstance()->getBookmarks();
    for (const Bookmark& bookmark : bookmarks) {
        if (bookmark.isHidden())
            continue;
        const QString extraData = bookmark.getExtraData();
        if (extraData.isEmpty())
            continue;
        if (extraData.toInt(nullptr, 10) == currentPage) {
            hasDogEar = true;
            return;
        }
    }
}

void ComicsReader::areDogEarsLoaded(bool& isLoaded)
{
    isLoaded = DogEarManager::sharedInstance()->isTableValid();
}

void ComicsReader::getDogEarKey(int& key, const Bookmark& dogEar)
{
    key = dogEar.getExtraData().toInt(nullptr, 10);
}
