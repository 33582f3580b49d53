// SPDX-License-Identifier: MIT
#ifndef TAMBER_MAINWINDOWCONTROLLER_H
#define TAMBER_MAINWINDOWCONTROLLER_H

#include "TamberGlobal.h"

#include <QObject>

// The application's main window as the reading view sees it.
class TAMBER_EXPORT MainWindowController : public QObject
{
    Q_OBJECT

public:
    static MainWindowController* sharedInstance();

    // Lets go of the reading view (the end of a book); the host acts on cleared().
    void clear();

signals:
    void cleared();

private:
    MainWindowController();
};

#endif
