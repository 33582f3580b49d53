// SPDX-License-Identifier: MIT
#ifndef READWINDOW_H
#define READWINDOW_H

#include "Library.h"
#include "PluginState.h"

#include <QPointer>
#include <QSize>
#include <QString>
#include <QWidget>

class PluginInterface;
class QLabel;
class Volume;

// A window that holds a reading view the way the device's main window does:
// the plug-in is given a child widget of the reading container and the view
// takes the container as its parent. The header and the footer go to the
// window's title; closing the window, by Escape, by the menu or at the end of
// the book, saves the reading position. When the view closes its container
// (a page it cannot show), nothing is saved, and a book that showed no page
// gets back the reading state it had before.
class ReadWindow : public QWidget
{
    Q_OBJECT

public:
    // screen is the emulated screen that the view fills.
    ReadWindow(PluginInterface* plugin, const QSize& screen);
    ~ReadWindow() override;

    // Opens the book at its saved position. False when the view shows nothing
    // (a book without pages); the user has been told.
    bool open(const Volume& book);

    QWidget* view() const;
    // 1 once the view has closed its container, else 0.
    int exitStatus() const;

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void setHeader(const QString& text);
    void setFooter(const QString& title, int page, int numPages);
    void loaded();
    void endOfBook();
    void containerDestroyed();
    void updateIndicators();
    void paintSettled();

private:
    QWidget* createView(PluginInterface* plugin, const QSize& screen);
    void honourViewProperties();
    void save();
    void updateTitle();

    PluginState m_state;
    QPointer<QWidget> m_container;
    QPointer<QWidget> m_view;
    QLabel* m_header;
    QLabel* m_indicators;
    QLabel* m_statusLine;
    QString m_headerText;
    QString m_footerText;
    QString m_bookId;
    Library::ReadingState m_stateBefore;
    bool m_hadState = false;
    int m_page = 0;
    bool m_shownPage = false;
    bool m_closedByView = false;
    bool m_loaded = false;
    bool m_saved = false;
    int m_exitStatus = 0;
};

#endif
