// SPDX-License-Identifier: MIT
// The plug-in's root object: how it is found and cast. What it declares is
// tst_tamber's, through the program.

#include "ComicsReaderPlugin.h"
#include "ParserInterface.h"
#include "PluginInterface.h"

#include <QPointer>
#include <QtTest>

#include <memory>

extern "C" QObject* qt_plugin_instance();

class TestPlugin : public QObject
{
    Q_OBJECT

private slots:
    void instanceIsKeptUntilDeleted();
    void metacastAnswers_data();
    void metacastAnswers();
    void parsersAreNewObjectsOwnedByTheCaller();
};

void TestPlugin::instanceIsKeptUntilDeleted()
{
    QPointer<QObject> first = qt_plugin_instance();
    QVERIFY(first);
    QCOMPARE(qt_plugin_instance(), first.data());
    QVERIFY(!first->parent());

    delete first.data();
    QVERIFY(!first);
    QObject* second = qt_plugin_instance();
    QVERIFY(second);
    QCOMPARE(second->metaObject()->className(), "ComicsReaderPlugin");
    QCOMPARE(qt_plugin_instance(), second);
}

void TestPlugin::metacastAnswers_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("answer");

    QTest::newRow("the interface id gives the interface")
        << QByteArray("com.ostra.tamber.PluginInterface") << "interface";
    QTest::newRow("the interface name gives the interface")
        << QByteArray("PluginInterface") << "interface";
    QTest::newRow("the class name gives the object")
        << QByteArray("ComicsReaderPlugin") << "object";
    QTest::newRow("QObject gives the object") << QByteArray("QObject") << "object";
    QTest::newRow("another name gives nothing") << QByteArray("ComicsReaderParser") << "null";
    QTest::newRow("no name gives nothing") << QByteArray() << "null";
}

void TestPlugin::metacastAnswers()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, answer);

    ComicsReaderPlugin plugin;
    void* result = plugin.qt_metacast(name.isNull() ? nullptr : name.constData());
    void* expected = answer == QLatin1String("interface")
        ? static_cast<void*>(static_cast<PluginInterface*>(&plugin))
        : answer == QLatin1String("object") ? static_cast<void*>(&plugin)
                                            : nullptr;
    QCOMPARE(result, expected);
    // The interface lies apart from the object, so a wrong cast would show.
    QVERIFY(
        static_cast<void*>(static_cast<PluginInterface*>(&plugin)) != static_cast<void*>(&plugin));
}

void TestPlugin::parsersAreNewObjectsOwnedByTheCaller()
{
    ComicsReaderPlugin plugin;
    std::unique_ptr<ParserInterface> first(plugin.parser());
    std::unique_ptr<ParserInterface> second(plugin.parser());
    QVERIFY(first && second);
    QVERIFY(first.get() != second.get());
    QVERIFY(!first->parent());
    QVERIFY(first->qt_metacast("ParserInterface"));
}

QTEST_MAIN(TestPlugin)
#include "tst_plugin.moc"
