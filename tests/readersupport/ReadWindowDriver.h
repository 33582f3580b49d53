#ifndef READWINDOWDRIVER_H
#define READWINDOWDRIVER_H

#include <QByteArray>
#include <QImage>
#include <QPoint>
#include <QProcess>
#include <QString>
#include <QStringList>

// Drives the window of "tamber read" on the X display of the environment as a
// person would: keys and clicks through xdotool, a picture through xwd.
class ReadWindowDriver
{
public:
    explicit ReadWindowDriver(const QProcessEnvironment& environment);
    // Kills the program if it still runs.
    ~ReadWindowDriver();

    // Starts the program and waits for its window to show; false with the
    // reason in error() when it does not.
    bool start(const QString& program, const QStringList& arguments);

    QString title() const;
    // Key names as xdotool takes them (Right, Next, Escape), blank-separated
    // for several in turn.
    bool key(const QString& names);
    // Positions are in the window's coordinates.
    bool click(const QPoint& at);
    // Presses, moves once and releases at once.
    bool flick(const QPoint& from, const QPoint& to);
    QImage screenshot() const;

    // The exit status, or -1 when the program is still running after that long.
    int waitForExit(int milliseconds = 10000);
    QByteArray standardError();
    QString error() const;

private:
    bool xdotool(const QStringList& arguments, QByteArray* output = nullptr) const;
    bool run(const QString& program, const QStringList& arguments, QByteArray* output) const;

    QProcessEnvironment m_environment;
    QProcess m_program;
    QString m_window;
    mutable QString m_error;
};

#endif
