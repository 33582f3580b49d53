// SPDX-License-Identifier: MIT
#ifndef COMICSREADER_H
#define COMICSREADER_H

#include "Bookmark.h"
#include "GestureDelegate.h"
#include "GestureReceiver.h"
#include "GuidedReadingMixin.h"
#include "ImageReaderDelegate.h"
#include "Pagelet.h"
#include "PanningViewMixin.h"
#include "SwipeGesture.h"
#include "TamberGlobal.h"
#include "TapGesture.h"
#include "Volume.h"

#include <QByteArray>
#include <QImage>
#include <QVector>
#include <QWidget>

class ComicArchive;
class DragGesture;
class PinchGesture;
class ZoomController;
struct PluginState;

// The full-screen reading view: one page of one book at a time. Pages are
// decoded in the paint handler only; every page change goes through setPage().
class ComicsReader : public QWidget,
                     public GestureReceiver,
                     public GestureDelegate,
                     public PanningViewMixin,
                     public GuidedReadingMixin,
                     public ImageReaderDelegate
{
    Q_OBJECT

public:
    // The view's parent is parent's own parent widget, the host's reading
    // container; parent itself is only the host's handle to that container.
    ComicsReader(QWidget* parent, PluginState* state);
    ~ComicsReader() override;

    bool tapGesture(GestureReceiver* receiver, TapGesture* gesture) override;
    bool dragGesture(GestureReceiver* receiver, DragGesture* gesture) override;
    bool swipeGesture(GestureReceiver* receiver, SwipeGesture* gesture) override;
    bool pinchGesture(GestureReceiver* receiver, PinchGesture* gesture) override;

    ZoomController* zoomController() const override;
    void setOrientation(ScreenOrientation orientation) override;
    ScreenOrientation orientation() const override;
    void fitWidth() override;
    void fitHeight() override;
    void rotate() override;

    // Each page counts as a chapter; index is 0-based.
    void goToChapter(int index) override;
    void panAndFitToRect(const QRect& rect) override;

    // Pans by a finger movement, or turns the page when dragged past an edge.
    void processOffset(const QPoint& offset) override;

    virtual void enterAnimationMode();
    // Shows the 0-based page. Accepts any index: the callers check bounds.
    virtual void setPage(int page);

    bool isLandscape() const;

signals:
    void prevChapter();
    void nextChapter();
    void footerEvent(const QString& title, int page, int numPages);
    void setChapterIndex(int index);
    void setHeaderText(const QString&);
    void doneLoading();
    void allHighlightsLoaded();
    void processSwipe(SwipeGesture* swipe);
    void processTap(TapGesture* tap);

public slots:
    void renderVolume(const Volume& volume, ReadingNavigationType type);
    virtual void renderPagelet(const Pagelet& content, ReadingNavigationType type);
    void renderPageletWithBookmark(
        const Pagelet& pagelet, const Bookmark& bookmark, ReadingNavigationType type);
    void renderImage(const QByteArray& imageData);
    void saveBookmark(bool send, Volume* volumeToUpdate);
    void goToPrevPage();
    void goToNextPage();
    // 1-based.
    void goToPage(int page);
    void fontSettingsChanged();
    void addDogEar();
    void removeDogEar();
    void removeDogEar(Bookmark& dogEar);
    void checkDogEar(bool& hasDogEar);
    void areDogEarsLoaded(bool& isLoaded);
    void getDogEarKey(int& key, const Bookmark& dogEar);

private slots:
    void onUserZoomChanged();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    int maxXForZoom() const;
    int maxYForZoom() const;
    // Rewrites a swipe on the turned screen to what it means on an upright one.
    void rotateSwipeIfLandscape(SwipeGesture* swipe);

    Volume volume;
    QVector<Pagelet> pages;
    int currentPage;
    // The page shown, already scaled for the zoom and turned for the rotation.
    QImage pageImage;
    // The host's orientation: -1 until the first page decides it, 1 and 3 are
    // landscape. Named rotation because orientation() is the accessor.
    int rotation;
    ComicArchive* archive;
    PluginState* pluginState;
    // Page that pageImage holds; -1 forces a decode on the next paint.
    int renderedPage;
    // Named so because zoomController() is the accessor; a child object.
    ZoomController* zoomControl;
    // Top-left corner of the shown part of pageImage, in its pixels.
    int panX;
    int panY;
};

#endif
