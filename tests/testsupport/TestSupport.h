#ifndef TESTSUPPORT_H
#define TESTSUPPORT_H

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QPair>
#include <QString>

namespace TestSupport {

// The shared sample comics, or an empty string when ../shared is not there.
QString samplesDir();
QString sampleCbz();
QString sampleCbr();

// Folder of the built programs (tamber, unrar, the plug-in).
QString binDir();

// A ZIP written with libzip; entry names are raw bytes so that tests can use
// any encoding. Returns false if libzip refused.
using ZipEntry = QPair<QByteArray, QByteArray>;
bool writeZip(const QString& path, const QList<ZipEntry>& entries);

// A page-like picture: a light ground with a dark frame, so that scaling and
// placement can be checked on pixels.
QImage makePage(int width, int height, const QColor& ink = Qt::black);
QByteArray encode(const QImage& image, const char* format);

} // namespace TestSupport

// Skips the current test with a clear message when the shared samples are absent.
#define TAMBER_REQUIRE_SAMPLES()                                                                   \
    do {                                                                                           \
        if (TestSupport::samplesDir().isEmpty())                                                   \
            QSKIP("../shared/samples is not beside the checkout; sample tests skipped");           \
    } while (false)

#endif
