// SPDX-License-Identifier: MIT
#include "Workload.h"

#include "BenchCompat.h"

#include <QFile>
#include <QStringList>

namespace {

// Raised whenever the generator makes different files for the same plan.
const int generatorVersion = 2;

// The manifest is one flat JSON object of numbers and strings, one field a
// line; written and read here, as Qt 4 has no JSON.
QMap<QString, QString> readFields(const QByteArray& text)
{
    QMap<QString, QString> fields;
    for (const QByteArray& rawLine : text.split('\n')) {
        QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.endsWith(QLatin1Char(',')))
            line.chop(1);
        const int colon = line.indexOf(QLatin1Char(':'));
        if (!line.startsWith(QLatin1Char('"')) || colon < 0)
            continue;
        QString key = line.left(colon).trimmed();
        QString value = line.mid(colon + 1).trimmed();
        key = key.mid(1, key.size() - 2);
        if (value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"')))
            value = value.mid(1, value.size() - 2);
        fields.insert(key, value);
    }
    return fields;
}

QByteArray writeFields(const QMap<QString, QString>& fields)
{
    QStringList lines;
    for (auto it = fields.constBegin(); it != fields.constEnd(); ++it) {
        bool number = false;
        it.value().toLongLong(&number);
        lines << QStringLiteral("    \"%1\": %2")
                     .arg(it.key(), number ? it.value() : QLatin1Char('"') + it.value() + QLatin1Char('"'));
    }
    return "{\n" + lines.join(QStringLiteral(",\n")).toUtf8() + "\n}\n";
}

} // namespace

Workload Workload::planned(Scale scale, const QString& dir)
{
    Workload workload;
    workload.dir = dir;
    workload.pageSize = QSize(1988, 3056);
    workload.quality = 85;
    if (scale == Full) {
        workload.scale = QStringLiteral("full");
        workload.comicPages = 300;
        workload.entries = 5000;
        workload.books = 200;
        workload.libraryPages = 10000;
        workload.largeSize = QSize(12000, 9000);
        workload.bigBookPages = 2000;
        workload.bigBookQuality = 92;
    } else {
        workload.scale = QStringLiteral("smoke");
        workload.comicPages = 4;
        workload.entries = 200;
        workload.books = 4;
        workload.libraryPages = 40;
        // Still over the single-image archive's pixel budget.
        workload.largeSize = QSize(5000, 4000);
    }
    return workload;
}

bool Workload::load(const QString& dir, Workload* workload, QString* error)
{
    QFile file(dir + QStringLiteral("/manifest.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: no workload; make one with bench-workload").arg(dir);
        return false;
    }
    const QMap<QString, QString> json = readFields(file.readAll());
    auto number = [&json](const char* key) { return json.value(QLatin1String(key)).toInt(); };
    if (number("version") != generatorVersion) {
        *error = QStringLiteral("%1: the workload is stale; make it again with bench-workload")
                     .arg(dir);
        return false;
    }
    workload->dir = dir;
    workload->scale = json.value(QStringLiteral("scale"));
    workload->comicPages = number("comicPages");
    workload->pageSize = QSize(number("pageWidth"), number("pageHeight"));
    workload->quality = number("quality");
    workload->entries = number("entries");
    workload->books = number("books");
    workload->libraryPages = number("libraryPages");
    workload->largeSize = QSize(number("largeWidth"), number("largeHeight"));
    workload->bigBookPages = number("bigBookPages");
    workload->bigBookQuality = number("bigBookQuality");
    return true;
}

bool Workload::save() const
{
    QFile file(dir + QStringLiteral("/manifest.json"));
    return file.open(QIODevice::WriteOnly) && file.write(writeFields(fields())) > 0;
}

bool Workload::sameAs(const Workload& other) const
{
    return fields() == other.fields();
}

QString Workload::comic() const
{
    return dir + QStringLiteral("/comic.cbz");
}

QString Workload::entriesComic() const
{
    return dir + QStringLiteral("/entries.cbz");
}

QString Workload::libraryDir() const
{
    return dir + QStringLiteral("/library");
}

QString Workload::largeImage() const
{
    return dir + QStringLiteral("/large.jpg");
}

QString Workload::bigBook() const
{
    return dir + QStringLiteral("/big.cbz");
}

QString Workload::bigBookStart() const
{
    return dir + QStringLiteral("/big-start.cbz");
}

QString Workload::bigPageName(int index)
{
    return QStringLiteral("page-%1.jpg").arg(index + 1, 4, 10, QLatin1Char('0'));
}

QString Workload::pageName(int index)
{
    return QStringLiteral("page-%1.jpg").arg(index + 1, 3, 10, QLatin1Char('0'));
}

QMap<QString, QString> Workload::fields() const
{
    QMap<QString, QString> fields;
    auto add = [&fields](const char* key, int value) {
        fields.insert(QLatin1String(key), QString::number(value));
    };
    add("version", generatorVersion);
    fields.insert(QStringLiteral("scale"), scale);
    add("comicPages", comicPages);
    add("pageWidth", pageSize.width());
    add("pageHeight", pageSize.height());
    add("quality", quality);
    add("entries", entries);
    add("books", books);
    add("libraryPages", libraryPages);
    add("largeWidth", largeSize.width());
    add("largeHeight", largeSize.height());
    add("bigBookPages", bigBookPages);
    add("bigBookQuality", bigBookQuality);
    return fields;
}
