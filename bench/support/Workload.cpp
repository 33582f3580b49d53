// SPDX-License-Identifier: MIT
#include "Workload.h"

#include "QtCompat.h"

#include <QFile>

#include <nlohmann/json.hpp>

#include <string>

namespace {

// Raised whenever the generator makes different files for the same plan.
const int generatorVersion = 2;

// A whole number of the manifest, 0 where it has none.
int number(const nlohmann::json& manifest, const char* key)
{
    const auto field = manifest.find(key);
    return field != manifest.end() && field->is_number_integer() ? field->get<int>() : 0;
}

QString text(const nlohmann::json& manifest, const char* key)
{
    const auto field = manifest.find(key);
    return field != manifest.end() && field->is_string()
        ? QString::fromUtf8(field->get<std::string>().c_str())
        : QString();
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
    const QByteArray bytes = file.readAll();
    // Without exceptions: text that is not JSON comes back discarded.
    const nlohmann::json json = nlohmann::json::parse(
        bytes.constData(), bytes.constData() + bytes.size(), nullptr, false);
    if (!json.is_object()) {
        *error = QStringLiteral("%1: the manifest is not a JSON object; make the workload again "
                                "with bench-workload")
                     .arg(dir);
        return false;
    }
    if (number(json, "version") != generatorVersion) {
        *error = QStringLiteral("%1: the workload is stale; make it again with bench-workload")
                     .arg(dir);
        return false;
    }
    workload->dir = dir;
    workload->scale = text(json, "scale");
    workload->comicPages = number(json, "comicPages");
    workload->pageSize = QSize(number(json, "pageWidth"), number(json, "pageHeight"));
    workload->quality = number(json, "quality");
    workload->entries = number(json, "entries");
    workload->books = number(json, "books");
    workload->libraryPages = number(json, "libraryPages");
    workload->largeSize = QSize(number(json, "largeWidth"), number(json, "largeHeight"));
    workload->bigBookPages = number(json, "bigBookPages");
    workload->bigBookQuality = number(json, "bigBookQuality");
    return true;
}

bool Workload::save() const
{
    const std::string text = manifest().dump(4) + '\n';
    QFile file(dir + QStringLiteral("/manifest.json"));
    return file.open(QIODevice::WriteOnly)
        && file.write(text.data(), qint64(text.size())) == qint64(text.size());
}

bool Workload::sameAs(const Workload& other) const
{
    return manifest() == other.manifest();
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

nlohmann::json Workload::manifest() const
{
    return {
        { "version", generatorVersion },
        { "scale", scale.toUtf8().constData() },
        { "comicPages", comicPages },
        { "pageWidth", pageSize.width() },
        { "pageHeight", pageSize.height() },
        { "quality", quality },
        { "entries", entries },
        { "books", books },
        { "libraryPages", libraryPages },
        { "largeWidth", largeSize.width() },
        { "largeHeight", largeSize.height() },
        { "bigBookPages", bigBookPages },
        { "bigBookQuality", bigBookQuality },
    };
}
