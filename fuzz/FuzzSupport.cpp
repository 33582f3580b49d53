// SPDX-License-Identifier: MIT
#include "FuzzSupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>

#include <cstdlib>

namespace FuzzSupport {

namespace {

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) { }

QStringList& scratchFiles()
{
    static QStringList files;
    return files;
}

void removeScratchFiles()
{
    for (const QString& path : scratchFiles())
        QFile::remove(path);
}

} // namespace

void initialize()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = { name, nullptr };
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(dropMessage);
    // Kept until the process ends, as libFuzzer exits without returning.
    static QGuiApplication* app = new QGuiApplication(argc, argv);
    Q_UNUSED(app);
}

QString scratchFile(const QString& suffix)
{
    const QString path = QDir::temp().filePath(
        QStringLiteral("tamber-fuzz-%1.%2").arg(QCoreApplication::applicationPid()).arg(suffix));
    if (scratchFiles().isEmpty())
        std::atexit(removeScratchFiles);
    if (!scratchFiles().contains(path))
        scratchFiles() << path;
    return path;
}

bool write(const QString& path, const std::uint8_t* data, std::size_t size)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        && file.write(reinterpret_cast<const char*>(data), qint64(size)) == qint64(size);
}

bool fitsBudget(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    const QSize size = QImageReader(&buffer).size();
    return !size.isValid() || qint64(size.width()) * size.height() <= qint64(4096) * 4096;
}

} // namespace FuzzSupport
