// SPDX-License-Identifier: MIT
#include "BenchCompat.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QWidget>

#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
#include <QStandardPaths>
#else
#include <QPainter>
#endif

namespace BenchCompat {

bool removeTree(const QString& path)
{
    const QFileInfoList entries = QDir(path).entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    bool ok = true;
    for (const QFileInfo& entry : entries)
        ok = (entry.isDir() && !entry.isSymLink() ? removeTree(entry.filePath())
                                                  : QFile::remove(entry.filePath()))
            && ok;
    return QDir().rmdir(path) && ok;
}

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
namespace {

// The screen of the program's own display server: one image of the widget's
// size, painted over by every paint.
QImage& screen(const QSize& size)
{
    static QImage image;
    if (image.size() != size)
        image = QImage(size, QImage::Format_RGB32);
    return image;
}

} // namespace
#endif

QString findExecutable(const QString& name)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    return QStandardPaths::findExecutable(name);
#else
    const QStringList folders = QString::fromLocal8Bit(qgetenv("PATH")).split(QLatin1Char(':'));
    for (const QString& folder : folders) {
        const QFileInfo file(QDir(folder.isEmpty() ? QStringLiteral(".") : folder), name);
        if (file.isFile() && file.isExecutable())
            return file.absoluteFilePath();
    }
    return QString();
#endif
}

void paint(QWidget* widget)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    widget->repaint();
#else
    QImage& image = screen(widget->size());
    widget->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
#endif
}

bool repaintsItself()
{
    return QT_VERSION >= QT_VERSION_CHECK(5, 0, 0);
}

} // namespace BenchCompat
