// SPDX-License-Identifier: MIT
// The JSON that the host program prints for the values of host calls. Every
// traced call and the records' shapes show in the session traces of
// sessions/; here, what the sessions' runs cannot show.

#include "TestSupport.h"
#include "TraceJson.h"

#include <QtTest>

class TestHostTrace : public QObject
{
    Q_OBJECT

private slots:
    void valuesHaveTheirJsonShape();
};

void TestHostTrace::valuesHaveTheirJsonShape()
{
    // In UTC whatever the zone tamber runs in, where the sessions' times are
    // told apart from those of the samples.
    QCOMPARE(TraceJson::value(
                 TestSupport::dateTimeAtOffset(QDate(2026, 11, 21), QTime(10, 30, 0, 5), 3600)),
        QByteArray("\"2026-11-21T09:30:00.005Z\""));
    QCOMPARE(QString::fromUtf8(TraceJson::value(QStringLiteral("\"Ça\"\n"))),
        QString::fromUtf8("\"\\\"Ça\\\"\\n\""));
}

QTEST_GUILESS_MAIN(TestHostTrace)
#include "tst_hosttrace.moc"
