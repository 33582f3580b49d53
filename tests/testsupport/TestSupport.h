// SPDX-License-Identifier: MIT
#ifndef TESTSUPPORT_H
#define TESTSUPPORT_H

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QInputEvent>
#include <QList>
#include <QMetaMethod>
#include <QMetaType>
#include <QPair>
#include <QPoint>
#include <QProcessEnvironment>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <QtTest/QTest>
#include <QApplication>

#include <memory>

#include <nlohmann/json_fwd.hpp>

#include "Pagelet.h"
#include "QtCompat.h"
#include "Volume.h"

class QWidget;

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
// Qt 5 knows containers of its own types as test data; Qt 4 is told.
Q_DECLARE_METATYPE(QList<QPoint>)
Q_DECLARE_METATYPE(QList<int>)
#endif

#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
#include <QTemporaryDir>
#endif

namespace TestSupport {

#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
using TemporaryDir = QTemporaryDir;
#else
// What the suites use of Qt 5's QTemporaryDir: a new empty folder, removed
// with its contents when the object goes.
class TemporaryDir
{
public:
    TemporaryDir();
    ~TemporaryDir();
    bool isValid() const { return !m_path.isEmpty(); }
    QString path() const { return m_path; }
    QString filePath(const QString& name) const { return m_path + QLatin1Char('/') + name; }

private:
    Q_DISABLE_COPY(TemporaryDir)
    QString m_path;
};
#endif

// What the two Qts spell differently: a list of names joined, a window on screen.
QByteArray joined(const QList<QByteArray>& parts, char separator);
bool waitForWindowShown(QWidget* window);

// Input events as the platform delivers them, at a time in milliseconds: a
// mouse event, a wheel turned by angle (eighths of a degree). Qt 5's events carry their time; under
// Qt 4 the host reads it as the time of arrival, which is fixed here until the next.
std::unique_ptr<QInputEvent> mouseEvent(QEvent::Type type, const QPointF& at,
    Qt::MouseButton button, Qt::MouseButtons held, unsigned long time);
std::unique_ptr<QInputEvent> wheelEvent(
    const QPointF& at, int angle, Qt::KeyboardModifiers modifiers, unsigned long time);

// A debug line as the stream writes it: Qt 4 ends every item with a blank,
// so its lines end in one; Qt 5 drops the last.
inline QString debugLine(const QString& text)
{
    return QT_VERSION < QT_VERSION_CHECK(5, 0, 0) ? text + QLatin1Char(' ') : text;
}

// An expected line of a trace, as this Qt writes it: a whole debug line,
// {"debug":"..."}, takes the debug stream's ending blank under Qt 4.
QByteArray traceLine(const QByteArray& expected);

// The methods a class adds to its base, in order: each as its access unless
// public (signals have none), kind, normalised signature and parameter names.
QStringList methodsOf(const QMetaObject& meta);

// The revision of the meta-objects moc writes: 6 is Qt 4.8's, as on the
// device, and 8 is Qt 5.15's.
inline int mocRevision()
{
    return QT_VERSION < QT_VERSION_CHECK(5, 0, 0) ? 6 : 8;
}

// The shared sample comics, or an empty string when ../shared is not there.
QString samplesDir();
QString sampleCbz();
QString sampleCbr();

// Folder of the built programs (tamber, unrar, the plug-in).
QString binDir();
// The built plug-in, and the verification text the device's loader reads in it.
QString pluginFile();
extern const QByteArray verificationText;

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
// A page with gradients, ink and flat panels: enough detail that a lossy
// decoder's error shows, and no two rows alike.
QImage drawing(int width, int height, const QColor& ink = Qt::black);
// The same drawing seen through a window whose opacity falls from left to right.
QImage translucent(int width, int height);
// The mean difference of corresponding channels, over premultiplied pixels
// (so that colour under transparency, which an encoder may change, counts
// for nothing); -1 when the sizes differ.
double meanDifference(const QImage& a, const QImage& b);

// A RAR 5 archive of stored (uncompressed) files, written by hand so that
// tests can give any entry names: RAR 5 names are UTF-8 bytes, duplicates
// allowed. Returns false if the file could not be written.
bool writeRar(const QString& path, const QList<ZipEntry>& entries);

// A GIF of one 1 × 1 frame on a logical screen of the given size, which Qt
// decodes to the whole screen.
QByteArray gifWithScreen(const QSize& screen);

// The start of a greyscale PNG of depth bits a pixel: its header claims the
// given size, its pixel data is cut off, so it reports the size but never decodes.
QByteArray pngHeaderOnly(const QSize& size, int depth = 1);
// A whole PNG of one colour (all bits clear), of any size: colour type 0
// (grey) or 2 (RGB) at the given bits a sample. Compressed row by row, so a
// 30,000 × 30,000 page costs a few kilobytes here and in the file.
QByteArray blankPng(const QSize& size, int depth, int colourType = 0);

// The program's JSON output, read with a library that serves both Qts:
// discarded when the text is no JSON; the value at a pointer such as
// "/volume/id", null where there is none; a string's text, empty for others.
nlohmann::json parseJson(const QByteArray& text);
nlohmann::json jsonAt(const nlohmann::json& value, const char* pointer);
QString jsonText(const nlohmann::json& value);
QStringList jsonTexts(const nlohmann::json& array);

// What a parser announces, in order: "p" a page, "v" its book ("V" with
// rights or on loan), "c" a cover. The records travel by non-const
// reference, which QSignalSpy cannot hold.
class Announcements : public QObject
{
    Q_OBJECT

public:
    explicit Announcements(QObject* parser);

    QString order;
    QVector<Pagelet> pages;
    QList<Volume> volumes;
    QImage cover;

private slots:
    void onPagelet(Pagelet& pagelet);
    void onVolume(Volume& volume, bool hasRights, bool isLoan);
    void onImage(const Volume& volume, const QImage& image);
};

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
    Run run(const QStringList& arguments, const QByteArray& input = QByteArray()) const;
    QString library() const { return m_folder + QStringLiteral("/library.sqlite"); }

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

private:
    Q_DISABLE_COPY(MessageLog)
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    QtMessageHandler previous;
#else
    QtMsgHandler previous;
#endif
};

} // namespace TestSupport

// Skips the current test with a clear message when the shared samples are absent.
#define TAMBER_REQUIRE_SAMPLES()                                                                   \
    do {                                                                                           \
        if (TestSupport::samplesDir().isEmpty())                                                   \
            QSKIP("../shared/samples is not beside the checkout; sample tests skipped");           \
    } while (false)

namespace TestSupport {

// The exit status that ctest counts as skipped (SKIP_RETURN_CODE).
const int skipStatus = 77;
// Records that the running suite skipped a case.
void noteSkip();
// A suite program's exit status: its failures, or skipStatus when every case
// that ran passed and some were skipped, so that no skip reads as a pass.
int exitStatus(int failures);

} // namespace TestSupport

// Skips as QSKIP does, and is remembered for the exit status. Qt 4 is told to
// skip the one row, as Qt 5 does; from initTestCase, the whole suite.
#undef QSKIP
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
#define QSKIP(message)                                                                             \
    do {                                                                                           \
        TestSupport::noteSkip();                                                                   \
        QTest::qSkip(message, __FILE__, __LINE__);                                                 \
        return;                                                                                    \
    } while (false)
#else
#define QSKIP(message)                                                                             \
    do {                                                                                           \
        TestSupport::noteSkip();                                                                   \
        QTest::qSkip(message,                                                                      \
            qstrcmp(QTest::currentTestFunction(), "initTestCase") == 0 ? QTest::SkipAll            \
                                                                       : QTest::SkipSingle,        \
            __FILE__, __LINE__);                                                                   \
        return;                                                                                    \
    } while (false)
#endif

// A suite's program, as QTEST_MAIN and QTEST_GUILESS_MAIN make it, with the
// exit status above. Qt 4's programs take their display server's options
// (-qws), which only a QApplication consumes.
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
#define TAMBER_TEST_MAIN_WITH(ApplicationClass, TestObject)                                        \
    int main(int argc, char* argv[])                                                               \
    {                                                                                              \
        ApplicationClass application(argc, argv);                                                  \
        QCoreApplication::setAttribute(Qt::AA_Use96Dpi, true);                                     \
        TestObject test;                                                                           \
        return TestSupport::exitStatus(QTest::qExec(&test, argc, argv));                           \
    }
#define TAMBER_TEST_GUILESS_MAIN(TestObject) TAMBER_TEST_MAIN_WITH(QCoreApplication, TestObject)
#else
#define TAMBER_TEST_MAIN_WITH(ApplicationClass, TestObject)                                        \
    int main(int argc, char* argv[])                                                               \
    {                                                                                              \
        ApplicationClass application(argc, argv);                                                  \
        TestObject test;                                                                           \
        return TestSupport::exitStatus(QTest::qExec(&test, argc, argv));                           \
    }
#define TAMBER_TEST_GUILESS_MAIN(TestObject) TAMBER_TEST_MAIN_WITH(QApplication, TestObject)
#endif
#define TAMBER_TEST_MAIN(TestObject) TAMBER_TEST_MAIN_WITH(QApplication, TestObject)

#endif
