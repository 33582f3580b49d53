// SPDX-License-Identifier: MIT
#include "ProgressBar.h"
#include "HostCompat.h"

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

int terminalWidth()
{
    winsize size {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
}

} // namespace

ProgressBar::ProgressBar(int total, bool enabled)
    : m_total(qMax(total, 1))
    , m_enabled(enabled)
{
}

ProgressBar::~ProgressBar()
{
    clear();
}

bool ProgressBar::isTerminal()
{
    return isatty(STDERR_FILENO);
}

void ProgressBar::show(int done, const QString& label)
{
    if (!m_enabled)
        return;
    const int barWidth = 24;
    const int filled = barWidth * qBound(0, done, m_total) / m_total;
    QString line
        = QStringLiteral("[%1%2] %3/%4 ")
              .arg(QString(filled, QLatin1Char('#')), QString(barWidth - filled, QLatin1Char('.')))
              .arg(done)
              .arg(m_total);
    line += label;
    // Never wider than the terminal, or the line would wrap and not redraw.
    line.truncate(terminalWidth() - 1);
    std::fputs(("\r\033[K" + line).toUtf8().constData(), stderr);
    std::fflush(stderr);
    m_visible = true;
}

void ProgressBar::clear()
{
    if (!m_visible)
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    m_visible = false;
}
