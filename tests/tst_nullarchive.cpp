#include "NullArchive.h"
#include "TestSupport.h"

#include <QImageReader>
#include <QtTest>

using TestSupport::MessageLog;

class TestNullArchive : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void pixelBudget_data();
    void pixelBudget();
    void undecoded_data();
    void undecoded();

private:
    QString write(const QString& name, const QByteArray& bytes);
    QString write(const QString& name, const QSize& size, const char* format);

    TestSupport::TemporaryDir dir;
};

QString TestNullArchive::write(const QString& name, const QByteArray& bytes)
{
    return TestSupport::writeFile(dir.filePath(name), bytes) ? dir.filePath(name) : QString();
}

QString TestNullArchive::write(const QString& name, const QSize& size, const char* format)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(qRgb(200, 200, 200));
    return image.save(dir.filePath(name), format) ? dir.filePath(name) : QString();
}

void TestNullArchive::initTestCase()
{
    QVERIFY(dir.isValid());
}

void TestNullArchive::pixelBudget_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("decoded");

    // Empty drawings claim any size in their header and cost nothing to decode.
    const auto drawing = [this](int width, int height) {
        return write(QStringLiteral("%1x%2.svg").arg(width).arg(height),
            QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\"/>")
                .arg(width)
                .arg(height)
                .toLatin1());
    };
    QTest::newRow("4096 x 4096 PNG at full size")
        << write(QStringLiteral("full.png"), QSize(4096, 4096), "PNG") << QSize(4096, 4096);
    QTest::newRow("4097 x 4096 JPEG shrunk by its decoder")
        << write(QStringLiteral("over.jpg"), QSize(4097, 4096), "JPEG") << QSize(3072, 3072);
    // Qt 5's GIF reader paints the frame onto its whole canvas; Qt 4's gives
    // the frame alone.
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    const QSize gifDecoded(4097, 4096);
#else
    const QSize gifDecoded(1, 1);
#endif
    QTest::newRow("GIF measured by its first frame, not its larger canvas")
        << write(QStringLiteral("canvas.gif"), TestSupport::gifWithScreen(QSize(4097, 4096)))
        << gifDecoded;
    QTest::newRow("square") << drawing(5000, 5000) << QSize(3750, 3750);
    QTest::newRow("sides truncate separately") << drawing(10000, 8000) << QSize(4218, 3375);
    QTest::newRow("portrait") << drawing(6000, 9000) << QSize(2531, 3796);
    QTest::newRow("very wide takes several steps") << drawing(100000, 1000) << QSize(31640, 315);
}

void TestNullArchive::pixelBudget()
{
    QFETCH(QString, path);
    QFETCH(QSize, decoded);

    if (path.endsWith(QLatin1String(".svg"))
        && !QImageReader::supportedImageFormats().contains("svg"))
        QSKIP("no SVG image plug-in: drawings of any claimed size cannot be made");
    MessageLog log;
    QCOMPARE(NullArchive(path).data(path).size(), decoded);
    const QSize claimed = QImageReader(path).size();
    const bool shrunk = claimed.width() > decoded.width() || claimed.height() > decoded.height();
    const QString line = TestSupport::debugLine(QStringLiteral("Image too big, scaling to QSize(%1, %2)")
                                                    .arg(decoded.width())
                                                    .arg(decoded.height()));
    QCOMPARE(log.lines(), shrunk ? QStringList(line) : QStringList());
}

void TestNullArchive::undecoded_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("line");

    // A PGM decodes in full, but its decoder cannot shrink it, so it is not read.
    QTest::newRow("over budget and cannot shrink") << write(QStringLiteral("over.pgm"),
        QSize(4097, 4096), "PGM") << "Image too big and scaling not supported, bailing!";
    // 50000 x 50000 wraps to a negative 32-bit count: no bound applies.
    QTest::newRow("wrapped pixel count is within budget") << write(QStringLiteral("huge.png"),
        TestSupport::pngHeaderOnly(QSize(50000, 50000))) << "Image load error: ";
    QTest::newRow("missing file") << dir.filePath(QStringLiteral("missing.png"))
                                  << "Image load error: ";
}

void TestNullArchive::undecoded()
{
    QFETCH(QString, path);
    QFETCH(QString, line);

    MessageLog log;
    QVERIFY(NullArchive(path).data(path).isNull());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().first().startsWith(line), qPrintable(log.lines().first()));
}

QTEST_MAIN(TestNullArchive)
#include "tst_nullarchive.moc"
