// SPDX-License-Identifier: MIT
// The ratio of ours to the reference, from pairs taken in turns: what one
// pair's disturbance or the pages' different costs must not move.

#include "PairedSamples.h"

#include <QtTest>

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
// Qt 5 knows containers of its own types as test data; Qt 4 is told.
Q_DECLARE_METATYPE(QVector<double>)
#endif

class TestPairedSamples : public QObject
{
    Q_OBJECT

private slots:
    void ratioOfPairs_data();
    void ratioOfPairs();
};

void TestPairedSamples::ratioOfPairs_data()
{
    QTest::addColumn<QVector<double>>("ours");
    QTest::addColumn<QVector<double>>("reference");
    QTest::addColumn<double>("ratio");

    // Four pages of unlike cost, turned in a cycle; ours equals the steps on
    // every page but the first, where the reference alone was slowed. The
    // medians of the two sides land on different pages (40 against 47 ms).
    QVector<double> turns;
    QVector<double> steps;
    const double pages[] = { 40, 36, 71, 56 };
    for (int pair = 0; pair < 15; ++pair) {
        turns << pages[pair % 4];
        steps << (pair == 0 ? 47 : pages[pair % 4]);
    }
    QTest::newRow("pages of unlike cost") << turns << steps << 1.0;
    QTest::newRow("ours twice the reference throughout")
        << (QVector<double>() << 2 << 4 << 6 << 8) << (QVector<double>() << 1 << 2 << 3 << 4)
        << 2.0;
    // A reference that took no measurable time says nothing about the ratio.
    QTest::newRow("a pair without a reference time")
        << (QVector<double>() << 3 << 5 << 7) << (QVector<double>() << 0 << 5 << 7) << 1.0;
}

void TestPairedSamples::ratioOfPairs()
{
    QFETCH(QVector<double>, ours);
    QFETCH(QVector<double>, reference);
    QFETCH(double, ratio);
    PairedSamples samples;
    for (int i = 0; i < ours.size(); ++i)
        samples.add(ours.at(i), reference.at(i));
    QCOMPARE(samples.ratio(), ratio);
}

QTEST_APPLESS_MAIN(TestPairedSamples)
#include "tst_pairedsamples.moc"
