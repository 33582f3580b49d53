#include "Workload.h"

#include <QFile>
#include <QJsonDocument>

namespace {

// Raised whenever the generator makes different files for the same plan.
const int generatorVersion = 1;

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
    const QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
    if (json.value(QStringLiteral("version")).toInt() != generatorVersion) {
        *error = QStringLiteral("%1: the workload is stale; make it again with bench-workload")
                     .arg(dir);
        return false;
    }
    workload->dir = dir;
    workload->scale = json.value(QStringLiteral("scale")).toString();
    workload->comicPages = json.value(QStringLiteral("comicPages")).toInt();
    workload->pageSize = QSize(json.value(QStringLiteral("pageWidth")).toInt(),
        json.value(QStringLiteral("pageHeight")).toInt());
    workload->quality = json.value(QStringLiteral("quality")).toInt();
    workload->entries = json.value(QStringLiteral("entries")).toInt();
    workload->books = json.value(QStringLiteral("books")).toInt();
    workload->libraryPages = json.value(QStringLiteral("libraryPages")).toInt();
    workload->largeSize = QSize(json.value(QStringLiteral("largeWidth")).toInt(),
        json.value(QStringLiteral("largeHeight")).toInt());
    return true;
}

bool Workload::save() const
{
    QFile file(dir + QStringLiteral("/manifest.json"));
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(toJson()).toJson()) > 0;
}

bool Workload::sameAs(const Workload& other) const
{
    return toJson() == other.toJson();
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

QString Workload::pageName(int index)
{
    return QStringLiteral("page-%1.jpg").arg(index + 1, 3, 10, QLatin1Char('0'));
}

QJsonObject Workload::toJson() const
{
    return {
        { QStringLiteral("version"), generatorVersion },
        { QStringLiteral("scale"), scale },
        { QStringLiteral("comicPages"), comicPages },
        { QStringLiteral("pageWidth"), pageSize.width() },
        { QStringLiteral("pageHeight"), pageSize.height() },
        { QStringLiteral("quality"), quality },
        { QStringLiteral("entries"), entries },
        { QStringLiteral("books"), books },
        { QStringLiteral("libraryPages"), libraryPages },
        { QStringLiteral("largeWidth"), largeSize.width() },
        { QStringLiteral("largeHeight"), largeSize.height() },
    };
}
