// SPDX-License-Identifier: MIT
#include "RarArchive.h"

#include "QtCompat.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>

namespace {

const int timeoutMs = 30000;
const qint64 listingLimit = qint64(16) << 20;
const qint64 entryLimit = ComicArchive::memoryLimit;

} // namespace

RarArchive::RarArchive(const QString& path)
    : ComicArchive(path)
    , path(path)
{
}

RarArchive::~RarArchive() = default;

QStringList RarArchive::files()
{
    const std::optional<QByteArray> output = extract({ QStringLiteral("vb"), path }, listingLimit);
    if (!output)
        return QStringList();

    const int end = output->indexOf('\0');
    // Read with the codec that QProcess encodes arguments with, the locale's
    // on both Qts, so that a listed name reaches the extractor again as the
    // bytes it printed.
    const QString text
        = QString::fromLocal8Bit(output->constData(), end < 0 ? output->size() : end);
    return text.split(QStringLiteral("\n"), QtCompat::KeepEmptyParts, Qt::CaseSensitive);
}

QImage RarArchive::data(const QString& name)
{
    const std::optional<QByteArray> output = extract(
        { QStringLiteral("p"), QStringLiteral("-ierr"), QStringLiteral("--"), path, name },
        entryLimit);
    return output ? decode(*output) : QImage();
}

std::optional<QByteArray> RarArchive::extract(const QStringList& arguments, qint64 limit) const
{
    QProcess process;
    // Its messages and exit status do not matter; only standard output does.
    process.setStandardErrorFile(QStringLiteral("/dev/null"));
    process.start(QStringLiteral("%1/unrar").arg(QCoreApplication::applicationDirPath()), arguments,
        QIODevice::ReadWrite);

    // Output is collected while waiting, and bounded, so that an extractor
    // that never stops writing cannot exhaust memory.
    QElapsedTimer clock;
    clock.start();
    QByteArray output;
    while (process.state() != QProcess::NotRunning) {
        if (clock.hasExpired(timeoutMs) || output.size() > limit) {
            process.kill();
            process.waitForFinished();
            return std::nullopt;
        }
        process.waitForReadyRead(int(qMax<qint64>(0, timeoutMs - clock.elapsed())));
        output += process.readAllStandardOutput();
    }
    if (process.error() == QProcess::FailedToStart || process.exitStatus() == QProcess::CrashExit)
        return std::nullopt;

    output += process.readAllStandardOutput();
    return output;
}
