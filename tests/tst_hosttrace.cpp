// Watching the calls that the plug-in makes into the host, and the JSON that
// the host program prints for the values they carry. Every traced call and
// the records' shapes show in the session traces of sessions/; here, the
// nesting rule and the values that no session meets.

#include "DogEarManager.h"
#include "HostTrace.h"
#include "Pagelet.h"
#include "TestSupport.h"
#include "TraceJson.h"

#include <QtTest>

#include <functional>

namespace {

// One "Class::method [args as JSON]" line per reported call.
class Recorder : public HostObserver
{
public:
    Recorder() { HostTrace::setObserver(this); }
    ~Recorder() override { HostTrace::setObserver(nullptr); }

    void hostCall(const QString& name, const QVariantList& args) override
    {
        lines << name + QLatin1Char(' ') + QString::fromUtf8(TraceJson::values(args));
        if (onCall)
            onCall();
    }

    QStringList lines;
    std::function<void()> onCall;
};

} // namespace

class TestHostTrace : public QObject
{
    Q_OBJECT

private slots:
    void onlyTheOutermostCallIsReported();
    void valuesHaveTheirJsonShape_data();
    void valuesHaveTheirJsonShape();
};

void TestHostTrace::onlyTheOutermostCallIsReported()
{
    // A host call inside another, one made while an observer reports (as a
    // view may when it hears of a call), and one on the host's own behalf.
    Recorder recorder;
    recorder.onCall = [] { DogEarManager::sharedInstance()->isTableValid(); };
    {
        HostTrace::Call outer("VolumeManager::getById", { QStringLiteral("/b.cbz") });
        HostTrace::Call inner("PageletManager::retrieveByBookId");
    }
    {
        HostTrace::Suppress ownBehalf;
        DogEarManager::sharedInstance()->getBookmarks();
    }
    QCOMPARE(recorder.lines, QStringList { R"(VolumeManager::getById ["/b.cbz"])" });
}

void TestHostTrace::valuesHaveTheirJsonShape_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("json");

    QTest::newRow("pagelets are counted")
        << QVariant::fromValue(QVector<Pagelet>(3)) << R"({"count":3})";
    QTest::newRow("a date-time in UTC with milliseconds")
        << QVariant(TestSupport::dateTimeAtOffset(QDate(2026, 11, 21), QTime(10, 30, 0, 5), 3600))
        << R"("2026-11-21T09:30:00.005Z")";
    QTest::newRow("an invalid date-time is null") << QVariant(QDateTime()) << "null";
    QTest::newRow("a string with quotes, a line break and accents")
        << QVariant(QStringLiteral("\"Ça\"\n")) << QString::fromUtf8(R"("\"Ça\"\n")");
    QTest::newRow("an empty string stays a string") << QVariant(QString()) << R"("")";
    QTest::newRow("no value") << QVariant() << "null";
}

void TestHostTrace::valuesHaveTheirJsonShape()
{
    QFETCH(QVariant, value);
    QFETCH(QString, json);

    QCOMPARE(QString::fromUtf8(TraceJson::value(value)), json);
}

QTEST_GUILESS_MAIN(TestHostTrace)
#include "tst_hosttrace.moc"
