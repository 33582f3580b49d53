// SPDX-License-Identifier: MIT
// ComicsReader: painting, zoom, pan and orientation.

#include "ComicsReader.h"

#include "ComicArchive.h"
#include "ComicArchiveFactory.h"
#include "QByteArrayArchive.h"
#include "ZoomController.h"

#include <QColor>
#include <QDebug>
#include <QPainter>
#include <QRectF>
#include <QTransform>

#include <cmath>

namespace {

// The prepared page, opaque and in the format the backing store takes
// fastest. A page with transparency is drawn onto white once, here: the view
// paints opaque and fills its background only after a decode, so a
// transparent page painted again would darken over its own last paint.
QImage opaqueOnWhite(const QImage& image)
{
    if (!image.hasAlphaChannel())
        return image.format() == QImage::Format_RGB32 ? image
                                                      : image.convertToFormat(QImage::Format_RGB32);
    QImage page(image.size(), QImage::Format_RGB32);
    page.fill(qRgb(255, 255, 255));
    QPainter painter(&page);
    painter.drawImage(0, 0, image);
    return page;
}

// The most pixels a prepared page may have, on any view: a comic-shaped page
// of the decode budget at the highest zoom in landscape on a large screen.
const qint64 preparedBudget = 2 * ComicArchive::pixelBudget;
// A comic page's shape, height over width (3300 × 5080, the common scan). In
// landscape, where a page is scaled to the view's height across, a longer
// page takes no more pixels than a page of this shape: a strip shows narrower.
const double comicShape = 5080.0 / 3300.0;

// The size at width for an image of the given shape, as scaledToWidth makes it.
int heightAtWidth(const QSize& image, int width)
{
    return qMax(1, qRound(double(image.height()) * width / image.width()));
}

// The page scaled for the zoom and turned on its side in landscape, as the view
// shows it, within preparedBudget. The decoded page is released as soon as the
// scaled one exists, and each copy as soon as the next does, so that at most
// two images live at once.
QImage prepared(QImage& page, int rotation, double zoom, const QSize& view)
{
    const bool landscape = (rotation & ~2) == 1;
    QImage scaled;
    if (landscape) {
        // Turned on its side, the page's width runs along the view's height.
        int width = int(view.height() * zoom);
        const double most = qMin(double(preparedBudget), double(width) * width * comicShape);
        if (!page.isNull() && double(width) * heightAtWidth(page.size(), width) > most)
            width = qMax(1, int(std::sqrt(most * page.width() / page.height())));
        scaled = page.scaledToWidth(width, Qt::SmoothTransformation);
    } else {
        QSize box(int(view.width() * zoom), int(view.height() * zoom));
        QSize fitted = page.size();
        fitted.scale(box, Qt::KeepAspectRatio);
        const double over = double(fitted.width()) * fitted.height() / preparedBudget;
        if (over > 1.0)
            box = QSize(int(box.width() / std::sqrt(over)), int(box.height() / std::sqrt(over)));
        scaled = page.scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    page = QImage();

    if (rotation != 0) {
        QTransform turn;
        turn.rotate(float(qint64(rotation) * 90), Qt::ZAxis);
        QImage turned = scaled.transformed(turn, Qt::FastTransformation);
        scaled = QImage();
        scaled.swap(turned);
    }
    return opaqueOnWhite(scaled);
}

// The zoom at which the page image, as shown now, fills the view across; never
// below 1.0, and 1.0 when there is nothing to measure.
double fitRatio(const QSize& image, const QSize& view)
{
    if (image.isEmpty() || view.isEmpty())
        return 1.0;
    const double ratio
        = (double(image.height()) / image.width()) / (double(view.height()) / view.width());
    return ratio < 1.0 ? 1.0 : ratio;
}

} // namespace

void ComicsReader::paintEvent(QPaintEvent*)
{
    // Opened before anything else, and only once: renderImage may have set one.
    if (!archive)
        archive = ComicArchiveFactory::instance(volume.getId().remove(QStringLiteral("file://")));

    QPainter painter(this);
    const int viewWidth = width();
    const int viewHeight = height();

    if (renderedPage != currentPage) {
        QString entry = pages.value(currentPage).getId();
        entry.remove(volume.getId() + QLatin1Char('/'));

        pageImage = QImage();
        // A file the factory could not open fails like an undecodable page.
        pageImage = archive ? archive->data(entry) : QImage();
        if (pageImage.isNull()) {
            qDebug() << "Couldn't figure out this file type!";
            // Closes the host's reading container, and the view with it.
            if (QObject* container = parent())
                container->deleteLater();
            return;
        }

        // The first page decides the rotation of the whole book.
        if (rotation == -1)
            rotation = pageImage.width() > pageImage.height() ? 1 : 0;
        renderedPage = currentPage;

        pageImage = prepared(
            pageImage, rotation, zoomControl->currentZoomFactor(), QSize(viewWidth, viewHeight));

        QColor white;
        white.setRgb(255, 255, 255, 255);
        painter.fillRect(0, 0, viewWidth, viewHeight, white);
    }

    // A page narrower (shorter) than the view is centred; one exactly as wide
    // gets no margin.
    const int centreX
        = pageImage.width() <= viewWidth - 1 ? (viewWidth - pageImage.width()) / 2 : 0;
    const int centreY
        = pageImage.height() <= viewHeight - 1 ? (viewHeight - pageImage.height()) / 2 : 0;
    panX = qMax(0, qMin(panX, pageImage.width() - viewWidth));
    panY = qMax(0, qMin(panY, pageImage.height() - viewHeight));

    painter.drawImage(QRectF(0, 0, viewWidth, viewHeight), pageImage,
        QRectF(panX - centreX, panY - centreY, viewWidth, viewHeight));
}

void ComicsReader::onUserZoomChanged()
{
    renderedPage = -1;
    repaint();
}

void ComicsReader::setOrientation(ScreenOrientation orientation)
{
    rotation = orientation;
    renderedPage = -1;
    update();
}

bool ComicsReader::isLandscape() const
{
    return (rotation & ~2) == 1;
}

void ComicsReader::fitWidth()
{
    zoomControl->setZoomFactor(isLandscape() ? 1.0 : fitRatio(pageImage.size(), size()));
    update();
}

void ComicsReader::fitHeight()
{
    // In landscape the page image is already turned, so the same ratio applies.
    zoomControl->setZoomFactor(isLandscape() ? fitRatio(pageImage.size(), size()) : 1.0);
    update();
}

void ComicsReader::rotate() { }

void ComicsReader::panAndFitToRect(const QRect&) { }

int ComicsReader::maxXForZoom() const
{
    return pageImage.width() - width();
}

int ComicsReader::maxYForZoom() const
{
    return pageImage.height() - height();
}

void ComicsReader::processOffset(const QPoint& offset)
{
    const int threshold = 80;
    const int dx = offset.x();
    const int dy = offset.y();
    const bool vertical = qAbs(dy) > qAbs(dx);
    const bool horizontal = qAbs(dx) > qAbs(dy);

    // Edges in this order; a page no taller than the view is always at its
    // bottom edge, so a long upward drag turns it even with nothing to pan.
    if (panY >= maxYForZoom() && dy < -threshold && vertical) {
        goToNextPage();
        return;
    }
    if (panX >= maxXForZoom() && dx < -threshold && horizontal) {
        goToNextPage();
        return;
    }
    if (panX <= 0 && dx > threshold && horizontal) {
        goToPrevPage();
        return;
    }
    if (panY <= 0 && dy > threshold && vertical) {
        goToPrevPage();
        return;
    }

    const int x = qMax(0, qMin(panX - dx, maxXForZoom()));
    const int y = qMax(0, qMin(panY - dy, maxYForZoom()));
    if (x == panX && y == panY)
        return;
    panX = x;
    panY = y;
    repaint();
}

void ComicsReader::enterAnimationMode()
{
    // An image held in memory is never animated.
    if (dynamic_cast<QByteArrayArchive*>(archive))
        return;
    PanningViewMixin::enterAnimationMode();
}
