// SPDX-License-Identifier: MIT
// The workload's manifest, which both Qts' programs read: what one build
// writes the other must read, whatever the layout of the JSON, and a
// manifest that cannot serve says why.

#include "TestSupport.h"
#include "Workload.h"

#include <QFile>
#include <QtTest>

class TestWorkloadManifest : public QObject
{
    Q_OBJECT

private slots:
    void plansRoundTrip_data();
    void plansRoundTrip();
    void readsAnyLayout();
    void refusesMissingOrStale();
};

void TestWorkloadManifest::plansRoundTrip_data()
{
    QTest::addColumn<int>("scale");
    QTest::newRow("full") << int(Workload::Full);
    QTest::newRow("smoke") << int(Workload::Smoke);
}

void TestWorkloadManifest::plansRoundTrip()
{
    QFETCH(int, scale);
    TestSupport::TemporaryDir dir;
    const Workload plan = Workload::planned(Workload::Scale(scale), dir.path());
    QVERIFY(plan.save());
    Workload loaded;
    QString error;
    QVERIFY2(Workload::load(dir.path(), &loaded, &error), qPrintable(error));
    QVERIFY(loaded.sameAs(plan));
    QCOMPARE(loaded.comicPages, plan.comicPages);
    QCOMPARE(loaded.pageSize, plan.pageSize);
    QCOMPARE(loaded.largeSize, plan.largeSize);
    QCOMPARE(loaded.bigBookPages, plan.bigBookPages);
    QCOMPARE(loaded.scale, plan.scale);
    // Only the full workload has the big book.
    QCOMPARE(loaded.bigBookPages > 0, scale == int(Workload::Full));
}

void TestWorkloadManifest::readsAnyLayout()
{
    TestSupport::TemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("manifest.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    // All on one line, in another order, the scale's name escaped; a field
    // it does not know, holding the separators, is left alone.
    const Workload plan = Workload::planned(Workload::Smoke, dir.path());
    file.write(QStringLiteral("{\"ignored\": \"a, \\\"b\\\": c\", \"pageHeight\": 3056, "
                              "\"scale\" : \"sm\\u006fke\", \"comicPages\": %1, \"version\":2, "
                              "\"pageWidth\": 1988}")
                   .arg(plan.comicPages)
                   .toUtf8());
    file.close();
    Workload loaded;
    QString error;
    QVERIFY2(Workload::load(dir.path(), &loaded, &error), qPrintable(error));
    QCOMPARE(loaded.scale, QStringLiteral("smoke"));
    QCOMPARE(loaded.comicPages, plan.comicPages);
    QCOMPARE(loaded.pageSize, QSize(1988, 3056));
    // Fields it lacks make it differ from the plan, so the generator makes it again.
    QVERIFY(!loaded.sameAs(plan));
}

void TestWorkloadManifest::refusesMissingOrStale()
{
    TestSupport::TemporaryDir dir;
    Workload loaded;
    QString error;
    QVERIFY(!Workload::load(dir.path(), &loaded, &error));
    QVERIFY(error.contains(QStringLiteral("no workload")));

    QFile file(dir.filePath(QStringLiteral("manifest.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\n    \"version\": 1,\n    \"comicPages\": 300\n}\n");
    file.close();
    QVERIFY(!Workload::load(dir.path(), &loaded, &error));
    QVERIFY(error.contains(QStringLiteral("stale")));

    // Cut short, as by a full disk.
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("{\n    \"version\": 2,\n    \"comicPages\": 3");
    file.close();
    QVERIFY(!Workload::load(dir.path(), &loaded, &error));
    QVERIFY(error.contains(QStringLiteral("not a JSON object")));
}

QTEST_APPLESS_MAIN(TestWorkloadManifest)
#include "tst_workloadmanifest.moc"
