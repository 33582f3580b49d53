// SPDX-License-Identifier: MIT
// The workload's manifest, written and read without Qt's JSON so that both
// Qts read it: what one build writes the other must read, and a manifest
// that Qt 5's JSON writer made (older workloads) still reads.

#include "BenchCompat.h"
#include "Workload.h"

#include <QFile>
#include <QtTest>

class TestWorkloadManifest : public QObject
{
    Q_OBJECT

private slots:
    void plansRoundTrip_data();
    void plansRoundTrip();
    void readsQtJsonLayout();
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
    BenchCompat::TemporaryDir dir;
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

void TestWorkloadManifest::readsQtJsonLayout()
{
    BenchCompat::TemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("manifest.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    // One field a line, as Qt's writer puts them, in another order and spaced
    // otherwise; a field it does not know is left alone.
    const Workload plan = Workload::planned(Workload::Smoke, dir.path());
    file.write(QStringLiteral("{\n\"version\":2,\n  \"scale\" : \"smoke\",\n"
                              "    \"comicPages\": %1,\n    \"ignored\": \"a b\",\n"
                              "    \"pageWidth\": 1988,\n    \"pageHeight\": 3056\n}\n")
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
    BenchCompat::TemporaryDir dir;
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
}

QTEST_APPLESS_MAIN(TestWorkloadManifest)
#include "tst_workloadmanifest.moc"
