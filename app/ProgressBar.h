// SPDX-License-Identifier: MIT
#ifndef PROGRESSBAR_H
#define PROGRESSBAR_H

#include <QString>

// A one-line progress bar on standard error, redrawn in place. Draws nothing
// when disabled, so callers need not check.
class ProgressBar
{
public:
    ProgressBar(int total, bool enabled);
    ~ProgressBar();

    // Whether standard error is a terminal.
    static bool isTerminal();

    void show(int done, const QString& label);
    // Erases the bar, so that other output starts on a clean line.
    void clear();

private:
    int m_total;
    bool m_enabled;
    bool m_visible = false;
};

#endif
