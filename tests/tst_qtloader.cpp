// SPDX-License-Identifier: MIT
// The plug-in as the device's Qt loads it: through Qt's own plug-in loader,
// which checks the verification text against its build, and then used only
// through the interfaces the host knows.

#include "Library.h"
#include "ParserInterface.h"
#include "PluginInterface.h"
#include "PluginState.h"
#include "TamberGlobal.h"
#include "TestSupport.h"

#include <QPluginLoader>
#include <QWidget>
#include <QtTest>

#include <memory>

class TestQtLoader : public QObject
{
    Q_OBJECT

private slots:
    void loadsThroughQt();
    void parsesAndPaintsThroughTheInterface();

private:
    TestSupport::TemporaryDir dir;
    PluginInterface* plugin = nullptr;
};

void TestQtLoader::loadsThroughQt()
{
    QPluginLoader loader(TestSupport::pluginFile());
    QVERIFY2(loader.load(), qPrintable(loader.errorString()));
    QObject* root = loader.instance();
    QVERIFY(root);
    QCOMPARE(root->metaObject()->className(), "ComicsReaderPlugin");
    plugin = qobject_cast<PluginInterface*>(root);
    QVERIFY(plugin);
}

void TestQtLoader::parsesAndPaintsThroughTheInterface()
{
    TAMBER_REQUIRE_SAMPLES();
    QVERIFY(plugin);
    QVERIFY(Library::open(dir.filePath("library.sqlite")));

    const std::unique_ptr<ParserInterface> parser(plugin->parser());
    TestSupport::Announcements book(parser.get());
    parser->parse(TestSupport::sampleCbz());
    QCOMPARE(book.pages.size(), 5);
    QCOMPARE(book.volumes.size(), 1);
    QVERIFY(Library::storeBook(book.volumes.first(), book.pages));

    // The host knows the view only as a widget with slots.
    PluginState state;
    QWidget container;
    container.resize(300, 400);
    QWidget* view = plugin->reader(&state, new QWidget(&container));
    QVERIFY(view);
    QCOMPARE(state.readerOpen, 1);
    QVERIFY(QMetaObject::invokeMethod(view, "renderVolume",
        Q_ARG(Volume, Library::book(book.volumes.first().getId())),
        Q_ARG(ReadingNavigationType, ReadingNavigationDefault)));
    view->resize(container.size());

    QImage image(view->size(), QImage::Format_RGB32);
    image.fill(qRgb(255, 0, 0));
    view->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    // The first page fills the width; the white margins above and below it,
    // and no red anywhere: the view painted every pixel.
    const QRgb centre = image.pixel(image.width() / 2, image.height() / 2);
    QVERIFY2(centre != qRgb(255, 255, 255), qPrintable(QString::number(centre, 16)));
    QCOMPARE(image.pixel(0, 0), qRgb(255, 255, 255));
    for (int y = 0; y < image.height(); y += 7) {
        for (int x = 0; x < image.width(); x += 7)
            QVERIFY(image.pixel(x, y) != qRgb(255, 0, 0));
    }
    Library::close();
}

TAMBER_TEST_MAIN(TestQtLoader)
#include "tst_qtloader.moc"
