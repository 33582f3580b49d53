// SPDX-License-Identifier: MIT
#include "MainWindowController.h"

#include "HostTrace.h"

MainWindowController::MainWindowController() = default;

MainWindowController* MainWindowController::sharedInstance()
{
    static MainWindowController* instance = new MainWindowController;
    return instance;
}

void MainWindowController::clear()
{
    HostTrace::Call call("MainWindowController::clear");
    emit cleared();
}
