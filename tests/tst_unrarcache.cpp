// SPDX-License-Identifier: MIT
// The extractor's cache of solid archives' entries, through the real program
// as the plug-in runs it: unrar p -ierr -- BOOK NAME.
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QtTest>

#include <zlib.h>

#include <algorithm>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

class TestUnrarCache : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void readsAsAFreshExtraction_data();
    void readsAsAFreshExtraction();
    void replacedBookGivesTheNewBytes_data();
    void replacedBookGivesTheNewBytes();
    void damagedKeptEntryIsNeverServed_data();
    void damagedKeptEntryIsNeverServed();
    void killedFillerLeavesNothingServed();
    void rarNamesNeverBecomePaths_data();
    void rarNamesNeverBecomePaths();
    void twoRunsAtOnce_data();
    void twoRunsAtOnce();
    void limitEvictsTheLeastRecentBook();
    void bookLargerThanTheLimit();
    void unusableCacheChangesOnlySpeed_data();
    void unusableCacheChangesOnlySpeed();

private:
    TestSupport::TemporaryDir dir;
};

namespace {

const QString unrar = TestSupport::binDir() + QStringLiteral("/unrar");

struct Run
{
    int status = -1;
    QByteArray out;
    QByteArray err;
};

QProcessEnvironment cacheEnvironment(const QString& cache, qint64 limit = -1)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TAMBER_UNRAR_CACHE_DIR"), cache);
    if (limit >= 0)
        environment.insert(QStringLiteral("TAMBER_UNRAR_CACHE_LIMIT"), QString::number(limit));
    return environment;
}

void start(QProcess& process, const QString& book, const QString& name,
    const QProcessEnvironment& environment)
{
    process.setProcessEnvironment(environment);
    process.start(unrar,
        QStringList() << "p"
                      << "-ierr"
                      << "--" << book << name);
}

Run finished(QProcess& process)
{
    Run run;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit)
        run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

Run extract(const QString& book, const QString& name, const QProcessEnvironment& environment)
{
    QProcess process;
    start(process, book, name, environment);
    return finished(process);
}

// The extraction without any cache, which the cache must give byte for byte.
Run fresh(const QString& book, const QString& name)
{
    return extract(book, name, cacheEnvironment(QStringLiteral("/nonexistent"), 0));
}

// Bytes that no compressor shrinks and no two pages share.
QByteArray noise(int size, quint64 seed)
{
    QByteArray bytes(size, '\0');
    quint64 state = seed * 0x9e3779b97f4a7c15ULL + 1;
    for (int i = 0; i < size; ++i) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        bytes[i] = char(state >> 24);
    }
    return bytes;
}

using Pages = QList<QPair<QString, QByteArray>>;

Pages pagesOf(int count, int size, quint64 seed)
{
    Pages pages;
    pages << qMakePair(QStringLiteral("ComicInfo.xml"), QByteArray("<ComicInfo/>"));
    for (int i = 1; i <= count; ++i)
        pages << qMakePair(QStringLiteral("p%1.jpg").arg(i, 3, 10, QLatin1Char('0')),
            noise(size, seed + quint64(i)));
    return pages;
}

// Writes the pages and packs them with 7-Zip: kind "solid", "solid with a
// plain header", "non-solid" or "zip". False when 7-Zip fails.
bool pack(const QString& path, const Pages& pages, const QString& kind)
{
    TestSupport::TemporaryDir files;
    for (const auto& page : pages) {
        if (!TestSupport::writeFile(files.filePath(page.first), page.second))
            return false;
    }
    QStringList arguments { "a", "-bd", "-y" };
    if (kind == QLatin1String("zip"))
        arguments << "-tzip";
    else
        arguments << "-t7z"
                  << "-m0=lzma2"
                  << "-mx=1" << (kind.startsWith(QLatin1String("solid")) ? "-ms=on" : "-ms=off");
    // 7-Zip packs the archive's own header too unless told not to.
    if (kind == QLatin1String("solid with a plain header"))
        arguments << "-mhc=off";
    QFile::remove(path);
    QProcess archiver;
    archiver.setWorkingDirectory(files.path());
    archiver.start("7zz", arguments << path << ".");
    if (!archiver.waitForStarted())
        return false;
    return archiver.waitForFinished(120000) && archiver.exitCode() == 0;
}

// The book folders in the cache, and the entry files among their files.
QStringList bookFolders(const QString& cache)
{
    return QDir(cache).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

QStringList keptEntries(const QString& cache)
{
    QStringList kept;
    for (const QString& book : bookFolders(cache)) {
        for (const QString& file : QDir(cache + '/' + book).entryList(QDir::Files)) {
            if (file.startsWith(QLatin1String("e-")))
                kept << book + '/' + file;
        }
    }
    return kept;
}

qint64 usage(const QString& cache)
{
    qint64 bytes = 0;
    for (const QString& book : bookFolders(cache)) {
        const QDir folder(cache + '/' + book);
        for (const QFileInfo& file : folder.entryInfoList(QDir::Files))
            bytes += file.size();
    }
    return bytes;
}

// Waits until no filler works on any book: each holds its book's lock while
// it runs, so taking every lock in turn waits for them all.
void waitForFillers(const QString& cache)
{
    for (const QString& book : bookFolders(cache)) {
        const QByteArray lock = QFile::encodeName(cache + '/' + book + "/lock");
        const int fd = ::open(lock.constData(), O_RDWR | O_CLOEXEC);
        if (fd < 0)
            continue;
        ::flock(fd, LOCK_EX);
        ::close(fd);
    }
}

// Reads every page of the book in the given order through the cache.
bool readsMatch(const QString& book, const Pages& pages, const QList<int>& order,
    const QProcessEnvironment& environment, QString* failure)
{
    for (int index : order) {
        const Run run = extract(book, pages.at(index).first, environment);
        if (run.status != 0 || run.out != pages.at(index).second || !run.err.isEmpty()) {
            *failure = QStringLiteral("%1: status %2, %3 bytes, %4")
                           .arg(pages.at(index).first)
                           .arg(run.status)
                           .arg(run.out.size())
                           .arg(QString::fromLocal8Bit(run.err));
            return false;
        }
    }
    return true;
}

} // namespace

void TestUnrarCache::initTestCase()
{
    QVERIFY(dir.isValid());
    QVERIFY(QFileInfo(unrar).isExecutable());
    QProcess archiver;
    archiver.start("7zz", QStringList() << "i");
    if (!archiver.waitForStarted())
        QSKIP("7zz (Debian's 7zip) is not installed: scripts/setup installs it");
    archiver.waitForFinished();
}

void TestUnrarCache::readsAsAFreshExtraction_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QList<int>>("order");
    QTest::addColumn<bool>("kept");

    const int count = 12;
    QList<int> forward, backward, random;
    for (int i = 0; i <= count; ++i) {
        forward << i;
        backward.prepend(i);
    }
    random = { 7, 2, 12, 0, 9, 9, 4, 11, 1, 5, 3, 10, 6, 8, 2 };
    QTest::newRow("solid 7z read forward") << "solid" << forward << true;
    QTest::newRow("solid 7z read backward") << "solid" << backward << true;
    QTest::newRow("solid 7z read at random") << "solid" << random << true;
    QTest::newRow("solid 7z whose header is not packed")
        << "solid with a plain header" << random << true;
    // Cheap to reach already: nothing is kept for them.
    QTest::newRow("7z that is not solid keeps nothing") << "non-solid" << random << false;
    QTest::newRow("ZIP keeps nothing") << "zip" << random << false;
}

void TestUnrarCache::readsAsAFreshExtraction()
{
    QFETCH(QString, kind);
    QFETCH(QList<int>, order);
    QFETCH(bool, kept);
    const QString book = dir.filePath(kind + QStringLiteral(".cbr"));
    const QString cache = dir.filePath(QStringLiteral("cache-") + QTest::currentDataTag());
    const Pages pages = pagesOf(12, 40000, 100);
    QVERIFY(pack(book, pages, kind));
    for (int index : QList<int> { 0, 6, 12 })
        QCOMPARE(fresh(book, pages.at(index).first).out, pages.at(index).second);

    QString failure;
    QVERIFY2(
        readsMatch(book, pages, order, cacheEnvironment(cache), &failure), qPrintable(failure));
    waitForFillers(cache);
    QCOMPARE(keptEntries(cache).size(), kept ? pages.size() : 0);
    // Everything read again comes from the cache now.
    QVERIFY2(
        readsMatch(book, pages, order, cacheEnvironment(cache), &failure), qPrintable(failure));
}

void TestUnrarCache::replacedBookGivesTheNewBytes_data()
{
    QTest::addColumn<bool>("inPlace");
    QTest::addColumn<bool>("sameTime");
    // A new file renamed over the old: another inode.
    QTest::newRow("renamed over the book") << false << false;
    // Rewritten into the same inode, the same size, and its time put back:
    // only the bytes tell.
    QTest::newRow("rewritten in place with the old size and time") << true << true;
}

void TestUnrarCache::replacedBookGivesTheNewBytes()
{
    QFETCH(bool, inPlace);
    QFETCH(bool, sameTime);
    const QString book = dir.filePath(QStringLiteral("replaced.cbr"));
    const QString cache = dir.filePath(QStringLiteral("cache-replaced-") + QTest::currentDataTag());
    const Pages before = pagesOf(6, 30000, 200);
    const Pages after = pagesOf(6, 30000, 300);
    const QString other = dir.filePath(QStringLiteral("other.cbr"));
    QVERIFY(pack(book, before, "solid"));
    QVERIFY(pack(other, after, "solid"));
    // The same size: 7z archives end where their header says, so bytes
    // after it change nothing but the size.
    const qint64 size = qMax(QFileInfo(book).size(), QFileInfo(other).size());
    for (const QString& path : { book, other }) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::Append));
        file.write(QByteArray(int(size - file.size()), '\0'));
    }
    QCOMPARE(extract(book, before.at(4).first, cacheEnvironment(cache)).out, before.at(4).second);
    waitForFillers(cache);
    QCOMPARE(keptEntries(cache).size(), before.size());

    struct stat old;
    QVERIFY(::stat(QFile::encodeName(book).constData(), &old) == 0);
    if (inPlace) {
        QFile target(book);
        QVERIFY(target.open(QIODevice::ReadWrite));
        QCOMPARE(target.write(TestSupport::readFile(other)), QFileInfo(other).size());
        target.close();
    } else {
        QVERIFY(::rename(QFile::encodeName(other).constData(), QFile::encodeName(book).constData())
            == 0);
    }
    if (sameTime) {
        const struct timespec times[2] = { old.st_atim, old.st_mtim };
        QVERIFY(::utimensat(AT_FDCWD, QFile::encodeName(book).constData(), times, 0) == 0);
    }
    for (int index : QList<int> { 4, 1, 6 })
        QCOMPARE(extract(book, after.at(index).first, cacheEnvironment(cache)).out,
            after.at(index).second);
}

void TestUnrarCache::damagedKeptEntryIsNeverServed_data()
{
    QTest::addColumn<QString>("damage");
    // A kept file cut short (a power cut before its bytes reached the disk).
    QTest::newRow("cut short") << "truncate";
    // The same length, other bytes: only the checksum tells.
    QTest::newRow("a byte changed") << "flip";
    // Another entry's file under this name's hash.
    QTest::newRow("another entry's file") << "swap";
}

void TestUnrarCache::damagedKeptEntryIsNeverServed()
{
    QFETCH(QString, damage);
    const QString book = dir.filePath(QStringLiteral("damaged.cbr"));
    const QString cache = dir.filePath(QStringLiteral("cache-damaged-") + damage);
    const Pages pages = pagesOf(4, 20000, 400);
    QVERIFY(pack(book, pages, "solid"));
    QCOMPARE(extract(book, pages.at(2).first, cacheEnvironment(cache)).out, pages.at(2).second);
    waitForFillers(cache);

    // The kept file of page 2 is the one whose bytes end with the page's.
    QString target, neighbour;
    for (const QString& kept : keptEntries(cache)) {
        const QByteArray bytes = TestSupport::readFile(cache + '/' + kept);
        if (bytes.endsWith(pages.at(2).second))
            target = cache + '/' + kept;
        else if (bytes.endsWith(pages.at(3).second))
            neighbour = cache + '/' + kept;
    }
    QVERIFY(!target.isEmpty() && !neighbour.isEmpty());
    QByteArray bytes = TestSupport::readFile(target);
    if (damage == QLatin1String("truncate"))
        bytes.chop(1000);
    else if (damage == QLatin1String("flip"))
        bytes[bytes.size() - 500] = char(bytes.at(bytes.size() - 500) ^ 0x20);
    else
        bytes = TestSupport::readFile(neighbour);
    QVERIFY(TestSupport::writeFile(target, bytes));

    const Run run = extract(book, pages.at(2).first, cacheEnvironment(cache));
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out, pages.at(2).second);
}

// A filler killed in the middle of an entry leaves its half-written file
// aside, where no run reads it; the next run prints the whole entry.
void TestUnrarCache::killedFillerLeavesNothingServed()
{
    const QString book = dir.filePath(QStringLiteral("killed.cbr"));
    const QString cache = dir.filePath(QStringLiteral("cache-killed"));
    Pages pages = pagesOf(3, 20000, 500);
    // A large entry whose bytes LZMA must work at: the filler spends a while
    // inside it, where it is killed.
    QByteArray large;
    for (int i = 0; large.size() < (48 << 20); ++i)
        large += QByteArray::number(qint64(i) * 7919 % 100003) + (i % 13 ? " " : "\n");
    pages.insert(2, qMakePair(QStringLiteral("p001b.jpg"), large));
    QVERIFY(pack(book, pages, "solid"));

    QProcess first;
    start(first, book, pages.last().first, cacheEnvironment(cache));
    // The filler's file in progress is named after its process.
    QString partial;
    for (int tries = 0; partial.isEmpty() && tries < 200000; ++tries) {
        for (const QString& folder : bookFolders(cache)) {
            for (const QString& file : QDir(cache + '/' + folder).entryList(QDir::Files)) {
                const QString path = cache + '/' + folder + '/' + file;
                if (file.startsWith(QLatin1String("t-")) && QFileInfo(path).size() > (1 << 20))
                    partial = path;
            }
        }
    }
    QVERIFY2(!partial.isEmpty(), "no entry in progress was seen");
    const pid_t filler = pid_t(QFileInfo(partial).fileName().section('-', 1, 1).toLong());
    QVERIFY(filler > 0);
    QCOMPARE(::kill(filler, SIGKILL), 0);
    // The run that started it prints its entry all the same.
    const Run run = finished(first);
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out, pages.last().second);
    waitForFillers(cache);

    for (const QString& kept : keptEntries(cache))
        QVERIFY(!TestSupport::readFile(cache + '/' + kept).endsWith(large.right(4096)));
    const Run again = extract(book, pages.at(2).first, cacheEnvironment(cache));
    QCOMPARE(again.status, 0);
    QVERIFY(again.out == large);
    waitForFillers(cache);
    // The next filler cleared what the killed one left.
    QVERIFY(!QFileInfo(partial).exists());
}

void TestUnrarCache::rarNamesNeverBecomePaths_data()
{
    QTest::addColumn<bool>("solid");
    QTest::newRow("solid RAR 5") << true;
    QTest::newRow("RAR 5 that is not solid keeps nothing") << false;
}

// Entries are kept under names made from hashes: a name that climbs out of
// its folder, starts at the root or holds a line break stays an entry name.
void TestUnrarCache::rarNamesNeverBecomePaths()
{
    QFETCH(bool, solid);
    const QString book = dir.filePath(QStringLiteral("names.cbr"));
    const QString cache = dir.filePath(QStringLiteral("cache-names-%1").arg(solid));
    const QList<TestSupport::ZipEntry> entries { { "01.jpg", noise(30000, 1000) },
        { "../../escaped.jpg", noise(30000, 1001) }, { "/tmp/rooted.jpg", noise(30000, 1002) },
        { "line\nbreak.jpg", noise(30000, 1003) }, { "01.jpg", noise(30000, 1004) } };
    QVERIFY(TestSupport::writeRar(book, entries));
    if (solid) {
        // The main header's archive flags, after the mark, its CRC, its size,
        // type and flags: bit 2 is "solid".
        QByteArray rar = TestSupport::readFile(book);
        QCOMPARE(rar.mid(12, 4), QByteArray("\x03\x01\x00\x00", 4));
        rar[15] = '\x04';
        const quint32 crc
            = quint32(::crc32(0, reinterpret_cast<const Bytef*>(rar.constData() + 12), 4));
        for (int i = 0; i < 4; ++i)
            rar[8 + i] = char(crc >> (8 * i));
        QVERIFY(TestSupport::writeFile(book, rar));
    }
    // A name given twice is its first entry's, as without a cache.
    for (int index : QList<int> { 3, 0, 1, 2, 4 }) {
        const Run run
            = extract(book, QString::fromUtf8(entries.at(index).first), cacheEnvironment(cache));
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, entries.at(index == 4 ? 0 : index).second);
    }
    waitForFillers(cache);
    QCOMPARE(keptEntries(cache).size(), solid ? 4 : 0);
    QVERIFY(!QFileInfo(dir.filePath(QStringLiteral("escaped.jpg"))).exists());
    QVERIFY(!QFileInfo(QStringLiteral("/tmp/rooted.jpg")).exists());
    const QRegExp hashed(QStringLiteral("[0-9a-f]{32}/(e-[0-9a-f]{16}|key|lock)"));
    for (const QString& book : bookFolders(cache)) {
        for (const QString& file : QDir(cache + '/' + book).entryList(QDir::Files | QDir::Hidden))
            QVERIFY2(hashed.exactMatch(book + '/' + file), qPrintable(file));
    }
}

void TestUnrarCache::twoRunsAtOnce_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    // The host's parse and its view ask for the same page.
    QTest::newRow("the same page") << 10 << 10;
    QTest::newRow("a page the first run passes") << 10 << 3;
    QTest::newRow("a page beyond the first run's") << 3 << 10;
}

void TestUnrarCache::twoRunsAtOnce()
{
    QFETCH(int, first);
    QFETCH(int, second);
    const QString book = dir.filePath(QStringLiteral("twice.cbr"));
    const QString cache = dir.filePath(QStringLiteral("cache-twice-%1-%2").arg(first).arg(second));
    const Pages pages = pagesOf(10, 60000, 600);
    QVERIFY(pack(book, pages, "solid"));
    QProcess one, two;
    start(one, book, pages.at(first).first, cacheEnvironment(cache));
    start(two, book, pages.at(second).first, cacheEnvironment(cache));
    const Run a = finished(one);
    const Run b = finished(two);
    QCOMPARE(a.status, 0);
    QCOMPARE(b.status, 0);
    QCOMPARE(a.out, pages.at(first).second);
    QCOMPARE(b.out, pages.at(second).second);
    waitForFillers(cache);
    QCOMPARE(keptEntries(cache).size(), pages.size());
}

// Books are evicted whole, the one read least recently first.
void TestUnrarCache::limitEvictsTheLeastRecentBook()
{
    const QString cache = dir.filePath(QStringLiteral("cache-limit"));
    const Pages pages = pagesOf(8, 50000, 700);
    // Room for two books of about 400 KB, not three.
    const qint64 limit = 1000 * 1000;
    QStringList books;
    QStringList folders;
    for (int i = 0; i < 3; ++i) {
        books << dir.filePath(QStringLiteral("limit-%1.cbr").arg(i));
        QVERIFY(pack(books.last(), pagesOf(8, 50000, 700 + quint64(i) * 100), "solid"));
    }
    const auto read = [&](int book) {
        const Pages own = pagesOf(8, 50000, 700 + quint64(book) * 100);
        const Run run = extract(books.at(book), own.at(5).first, cacheEnvironment(cache, limit));
        waitForFillers(cache);
        return run.out == own.at(5).second;
    };
    QVERIFY(read(0));
    const QStringList afterFirst = bookFolders(cache);
    QCOMPARE(afterFirst.size(), 1);
    QVERIFY(read(1));
    QCOMPARE(bookFolders(cache).size(), 2);
    QVERIFY(read(0)); // book 0 read again: book 1 is now the least recent
    QVERIFY(read(2));
    QVERIFY(usage(cache) <= limit);
    const QStringList left = bookFolders(cache);
    QCOMPARE(left.size(), 2);
    QVERIFY(left.contains(afterFirst.first()));
    QCOMPARE(keptEntries(cache).size(), 2 * pages.size());
}

// A book larger than the limit keeps the pages from where the reader is:
// those behind go to make room for those ahead.
void TestUnrarCache::bookLargerThanTheLimit()
{
    const QString book = dir.filePath(QStringLiteral("large.cbr"));
    const QString cache = dir.filePath(QStringLiteral("cache-large"));
    const Pages pages = pagesOf(10, 50000, 800);
    QVERIFY(pack(book, pages, "solid"));
    // Room for four pages.
    const qint64 limit = 220 * 1000;
    const auto keptPages = [&] {
        QList<int> kept;
        for (const QString& file : keptEntries(cache)) {
            const QByteArray bytes = TestSupport::readFile(cache + '/' + file);
            for (int i = 1; i < pages.size(); ++i) {
                if (bytes.endsWith(pages.at(i).second))
                    kept << i;
            }
        }
        std::sort(kept.begin(), kept.end());
        return kept;
    };
    QString failure;
    for (int page : { 6, 2, 9 }) {
        QVERIFY2(readsMatch(book, pages, { page }, cacheEnvironment(cache, limit), &failure),
            qPrintable(failure));
        waitForFillers(cache);
        QVERIFY(usage(cache) <= limit);
        const QList<int> kept = keptPages();
        QVERIFY2(kept.contains(page) && (page == 10 || kept.contains(page + 1)),
            qPrintable(QStringLiteral("page %1 read, kept: %2").arg(page).arg(kept.size())));
    }
    QVERIFY2(readsMatch(book, pages, { 10, 0, 3 }, cacheEnvironment(cache, limit), &failure),
        qPrintable(failure));
}

void TestUnrarCache::unusableCacheChangesOnlySpeed_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("limit");
    QTest::newRow("a file where the folder would be") << "file/cache"
                                                      << "";
    QTest::newRow("a relative folder") << "relative"
                                       << "";
    QTest::newRow("a limit of 0 turns it off") << "off"
                                               << "0";
    QTest::newRow("a limit that is no number") << "bad-limit"
                                               << "lots";
}

void TestUnrarCache::unusableCacheChangesOnlySpeed()
{
    QFETCH(QString, folder);
    QFETCH(QString, limit);
    const QString book = dir.filePath(QStringLiteral("unusable.cbr"));
    const Pages pages = pagesOf(5, 20000, 900);
    QVERIFY(pack(book, pages, "solid"));
    QVERIFY(TestSupport::writeFile(dir.filePath(QStringLiteral("file")), "not a folder"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TAMBER_UNRAR_CACHE_DIR"),
        folder == QLatin1String("relative") ? folder : dir.filePath(folder));
    if (!limit.isEmpty())
        environment.insert(QStringLiteral("TAMBER_UNRAR_CACHE_LIMIT"), limit);
    QString failure;
    QVERIFY2(readsMatch(book, pages, QList<int> { 4, 1, 5 }, environment, &failure),
        qPrintable(failure));
    const Run missing = extract(book, QStringLiteral("p404.jpg"), environment);
    QCOMPARE(missing.status, 1);
    QCOMPARE(missing.err, fresh(book, QStringLiteral("p404.jpg")).err);
    waitForFillers(dir.filePath(folder));
    // A limit that is no number leaves the default limit.
    QCOMPARE(keptEntries(dir.filePath(folder)).size(),
        folder == QLatin1String("bad-limit") ? pages.size() : 0);
}

TAMBER_TEST_MAIN(TestUnrarCache)
#include "tst_unrarcache.moc"
