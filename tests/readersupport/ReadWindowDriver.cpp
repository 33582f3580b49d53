#include "ReadWindowDriver.h"

#include "XwdImage.h"

namespace {

const int toolTimeout = 15000;

QString text(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes).trimmed();
}

} // namespace

ReadWindowDriver::ReadWindowDriver(const QProcessEnvironment& environment)
    : m_environment(environment)
{
    m_program.setProcessEnvironment(environment);
}

ReadWindowDriver::~ReadWindowDriver()
{
    if (m_program.state() != QProcess::NotRunning) {
        m_program.kill();
        m_program.waitForFinished();
    }
}

bool ReadWindowDriver::start(const QString& program, const QStringList& arguments)
{
    m_program.start(program, arguments);
    if (!m_program.waitForStarted()) {
        m_error = QStringLiteral("%1 did not start").arg(program);
        return false;
    }
    // The first window that the program shows.
    QByteArray windows;
    if (!xdotool(
            { QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                QStringLiteral("--pid"), QString::number(m_program.processId()) },
            &windows)) {
        m_error += QStringLiteral("; the program said: ") + text(m_program.readAllStandardError());
        return false;
    }
    m_window = text(windows).section(QLatin1Char('\n'), 0, 0);
    return !m_window.isEmpty();
}

QString ReadWindowDriver::title() const
{
    QByteArray name;
    return xdotool({ QStringLiteral("getwindowname"), m_window }, &name) ? text(name) : QString();
}

bool ReadWindowDriver::key(const QString& names)
{
    return xdotool(
        QStringList { QStringLiteral("key") } + names.split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

bool ReadWindowDriver::click(const QPoint& at)
{
    return xdotool({ QStringLiteral("mousemove"), QStringLiteral("--window"), m_window,
        QString::number(at.x()), QString::number(at.y()), QStringLiteral("click"),
        QStringLiteral("1") });
}

bool ReadWindowDriver::flick(const QPoint& from, const QPoint& to)
{
    return xdotool({ QStringLiteral("mousemove"), QStringLiteral("--window"), m_window,
        QString::number(from.x()), QString::number(from.y()), QStringLiteral("mousedown"),
        QStringLiteral("1"), QStringLiteral("mousemove"), QStringLiteral("--window"), m_window,
        QString::number(to.x()), QString::number(to.y()), QStringLiteral("mouseup"),
        QStringLiteral("1") });
}

QImage ReadWindowDriver::screenshot() const
{
    QByteArray dump;
    if (!run(QStringLiteral("xwd"), { QStringLiteral("-silent"), QStringLiteral("-id"), m_window },
            &dump))
        return QImage();
    const QImage image = readXwd(dump);
    if (image.isNull())
        m_error
            = QStringLiteral("xwd wrote %1 bytes that are no true-colour dump").arg(dump.size());
    return image;
}

int ReadWindowDriver::waitForExit(int milliseconds)
{
    if (m_program.state() != QProcess::NotRunning && !m_program.waitForFinished(milliseconds))
        return -1;
    return m_program.exitStatus() == QProcess::NormalExit ? m_program.exitCode() : -1;
}

QByteArray ReadWindowDriver::standardError()
{
    return m_program.readAllStandardError();
}

QString ReadWindowDriver::error() const
{
    return m_error;
}

bool ReadWindowDriver::xdotool(const QStringList& arguments, QByteArray* output) const
{
    return run(QStringLiteral("xdotool"), arguments, output);
}

bool ReadWindowDriver::run(
    const QString& program, const QStringList& arguments, QByteArray* output) const
{
    QProcess tool;
    tool.setProcessEnvironment(m_environment);
    tool.start(program, arguments);
    if (!tool.waitForFinished(toolTimeout)) {
        tool.kill();
        tool.waitForFinished();
        m_error = QStringLiteral("%1 %2 did not finish").arg(program, arguments.join(' '));
        return false;
    }
    if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
        m_error = QStringLiteral("%1 %2 failed: %3")
                      .arg(program, arguments.join(' '), text(tool.readAllStandardError()));
        return false;
    }
    if (output)
        *output = tool.readAllStandardOutput();
    return true;
}
