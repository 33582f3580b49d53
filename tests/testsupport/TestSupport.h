#ifndef TESTSUPPORT_H
#define TESTSUPPORT_H

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QPair>
#include <QProcessEnvironment>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QtGlobal>

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

// A comic of count PNG pages made by makePage, named p01.png, p02.png, ...
bool writeComic(const QString& path, int count, const QSize& pageSize = QSize(60, 80));

QByteArray readFile(const QString& path);
// Creates the folder too.
bool writeFile(const QString& path, const QByteArray& bytes);

// A page-like picture: a light ground with a dark frame, so that scaling and
// placement can be checked on pixels.
QImage makePage(int width, int height, const QColor& ink = Qt::black);
QByteArray encode(const QImage& image, const char* format);

// A RAR 5 archive of stored (uncompressed) files, written by hand so that
// tests can give any entry names: RAR 5 names are UTF-8 bytes, duplicates
// allowed. Returns false if the file could not be written.
bool writeRar(const QString& path, const QList<ZipEntry>& entries);

// The start of a one-bit greyscale PNG: its header claims the given size, its
// pixel data is cut off, so it reports the size but never decodes.
QByteArray pngHeaderOnly(const QSize& size);

// The built tamber program, run as a user runs it but with a library, settings
// and data of its own in folder.
class Tamber
{
public:
    struct Run
    {
        int status = -1; // -1: did not finish
        QByteArray out;
        QByteArray err;
    };

    explicit Tamber(const QString& folder);
    Run run(const QStringList& arguments, const QByteArray& input = QByteArray(),
        const QString& workingDirectory = QString()) const;
    QString library() const;

    QProcessEnvironment environment;

private:
    QString m_folder;
};

// Collects the debug, warning and info lines written while it lives, so that
// tests can check for a line and for the absence of any.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();

    QStringList lines() const;

    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

private:
    QtMessageHandler previous;
};

} // namespace TestSupport

// Skips the current test with a clear message when the shared samples are absent.
#define TAMBER_REQUIRE_SAMPLES()                                                                   \
    do {                                                                                           \
        if (TestSupport::samplesDir().isEmpty())                                                   \
            QSKIP("../shared/samples is not beside the checkout; sample tests skipped");           \
    } while (false)

#endif
