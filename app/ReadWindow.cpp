// SPDX-License-Identifier: MIT
#include "ReadWindow.h"

#include "Application.h"
#include "FileProblem.h"
#include "ImageReaderDelegate.h"
#include "MainWindowController.h"
#include "PluginInterface.h"
#include "ReadWindowControls.h"
#include "Volume.h"
#include "ZoomController.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMetaObject>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

namespace {

ImageReaderDelegate* imageReader(QWidget* view)
{
    return view ? static_cast<ImageReaderDelegate*>(view->qt_metacast("ImageReaderDelegate"))
                : nullptr;
}

} // namespace

ReadWindow::ReadWindow(PluginInterface* plugin, const QSize& screen)
    : m_header(new QLabel)
    , m_indicators(new QLabel)
    , m_statusLine(new QLabel)
{
    auto* headerRow = new QHBoxLayout;
    headerRow->addWidget(m_header, 1);
    headerRow->addWidget(m_indicators);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addLayout(headerRow);

    // The reading container: white, like the device's screen, so that the
    // margins around a page stay white whatever the view leaves unpainted.
    m_container = new QWidget;
    m_container->setFixedSize(screen);
    QPalette white = m_container->palette();
    white.setColor(QPalette::Window, Qt::white);
    m_container->setPalette(white);
    m_container->setAutoFillBackground(true);
    layout->addWidget(m_container);
    layout->addWidget(m_statusLine);

    m_view = createView(plugin, screen);
    honourViewProperties();
    updateTitle();
    new QShortcut(QKeySequence(Qt::Key_Escape), this, SLOT(close()));
}

ReadWindow::~ReadWindow()
{
    // The container goes first, and without telling this half-destroyed window.
    if (m_container) {
        disconnect(m_container, nullptr, this, nullptr);
        delete m_container;
    }
}

QWidget* ReadWindow::createView(PluginInterface* plugin, const QSize& screen)
{
    // The plug-in gets a handle inside the container; the view goes beside it.
    auto* handle = new QWidget(m_container);
    handle->hide();
    QWidget* view = plugin->reader(&m_state, handle);
    if (!view)
        return nullptr;
    view->setGeometry(QRect(QPoint(), screen));
    view->setAttribute(Qt::WA_AcceptTouchEvents);
    view->installEventFilter(this);

    // The view's meta-object lives in the plug-in: connected by signature.
    connect(view, SIGNAL(setHeaderText(QString)), this, SLOT(setHeader(QString)));
    connect(view, SIGNAL(footerEvent(QString, int, int)), this, SLOT(setFooter(QString, int, int)));
    connect(view, SIGNAL(doneLoading()), this, SLOT(loaded()));
    auto* controls = new ReadWindowControls(view, m_container, this);
    connect(view, SIGNAL(processTap(TapGesture*)), controls, SLOT(tap(TapGesture*)));
    connect(view, SIGNAL(processSwipe(SwipeGesture*)), controls, SLOT(swipe(SwipeGesture*)));
    connect(controls, SIGNAL(closeRequested()), this, SLOT(close()));

    connect(MainWindowController::sharedInstance(), SIGNAL(cleared()), this, SLOT(endOfBook()));
    connect(m_container, SIGNAL(destroyed()), this, SLOT(containerDestroyed()));
    if (ImageReaderDelegate* reader = imageReader(view)) {
        // A pinch tells its zoom with the offset, any other change without.
        connect(reader->zoomController(), SIGNAL(zoomFactorUpdated(double, double)), this,
            SLOT(updateIndicators()));
        connect(reader->zoomController(),
            SIGNAL(zoomFactorUpdatedWithOffset(double, double, QPointF)), this,
            SLOT(updateIndicators()));
    }
    return view;
}

// What the view asks to have drawn around it.
void ReadWindow::honourViewProperties()
{
    const auto wants
        = [this](const char* name) { return m_view && m_view->property(name).toBool(); };
    m_header->setVisible(wants("showTitle"));
    m_indicators->setVisible(wants("showIndicators"));
    m_statusLine->setVisible(wants("showStatusBottomLine"));
}

bool ReadWindow::open(const Volume& book)
{
    m_bookId = book.getId();
    m_hadState = Library::readingState(m_bookId, &m_stateBefore);
    if (!m_view) {
        Application::warn(QStringLiteral("the plug-in gave no reading view"));
        return false;
    }
    QMetaObject::invokeMethod(m_view, "renderVolume", Q_ARG(Volume, book),
        Q_ARG(ReadingNavigationType, ReadingNavigationRestore));
    if (!m_loaded) {
        Application::warn(QStringLiteral("%1: the reading view found no pages").arg(m_bookId));
        return false;
    }
    return true;
}

QWidget* ReadWindow::view() const
{
    return m_view;
}

int ReadWindow::exitStatus() const
{
    return m_exitStatus;
}

void ReadWindow::closeEvent(QCloseEvent* event)
{
    save();
    event->accept();
    QCoreApplication::quit();
}

// A paint that cannot decode its page has the container deleted later; a
// page counts as shown once the container outlives the deletions pending
// after a paint.
bool ReadWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_view && event->type() == QEvent::Paint && !m_shownPage)
        QTimer::singleShot(0, this, SLOT(paintSettled()));
    return QWidget::eventFilter(watched, event);
}

void ReadWindow::paintSettled()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (m_container && !m_closedByView)
        m_shownPage = true;
}

void ReadWindow::save()
{
    if (m_saved || m_closedByView || !m_view || !m_loaded)
        return;
    m_saved = true;
    Volume* unchanged = nullptr;
    QMetaObject::invokeMethod(
        m_view, "saveBookmark", Q_ARG(bool, false), Q_ARG(Volume*, unchanged));
}

void ReadWindow::setHeader(const QString& text)
{
    m_headerText = text;
    updateTitle();
}

void ReadWindow::setFooter(const QString& title, int page, int numPages)
{
    m_page = page;
    m_footerText = QStringLiteral("page %1 of %2").arg(page).arg(numPages);
    if (!title.isEmpty())
        m_footerText = title + QStringLiteral(", ") + m_footerText;
    updateTitle();
    updateIndicators();
}

void ReadWindow::updateTitle()
{
    QStringList parts;
    for (const QString& part : { m_headerText, m_footerText }) {
        if (!part.isEmpty())
            parts << part;
    }
    setWindowTitle(parts.isEmpty() ? QStringLiteral("tamber") : parts.join(QStringLiteral(" - ")));
    m_header->setText(m_headerText);
    m_statusLine->setText(m_footerText);
}

void ReadWindow::updateIndicators()
{
    if (m_indicators->isHidden() || !m_view)
        return;
    QStringList marks;
    if (ImageReaderDelegate* reader = imageReader(m_view)) {
        const double zoom = reader->zoomController()->currentZoomFactor();
        marks << QStringLiteral("%1%").arg(qRound(zoom * 100));
    }
    bool hasDogEar = false;
    QMetaObject::invokeMethod(m_view, "checkDogEar", Q_ARG(bool&, hasDogEar));
    if (hasDogEar)
        marks << QStringLiteral("dog ear");
    m_indicators->setText(marks.join(QStringLiteral("  ")));
}

void ReadWindow::loaded()
{
    m_loaded = true;
}

// The view has saved the finished book at its first page; saving again now,
// before the view goes back to the page it showed, writes the same.
void ReadWindow::endOfBook()
{
    save();
    close();
}

// Called while the container is being deleted: the view, its child, still
// lives, and saving now would store the page it could not show.
void ReadWindow::containerDestroyed()
{
    m_closedByView = true;
    m_exitStatus = Application::Failed;
    if (!m_shownPage && m_hadState)
        Library::setReadingState(m_bookId, m_stateBefore);
    QString cause = FileProblem::of(m_bookId);
    if (cause.isEmpty())
        cause = QStringLiteral("its picture cannot be decoded");
    Application::warn(QStringLiteral("%1: page %2 could not be shown (%3); the reading view "
                                     "closed, the reading position stays as it was")
                          .arg(m_bookId, QString::number(m_page), cause));
    close();
}
