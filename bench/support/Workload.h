// SPDX-License-Identifier: MIT
#ifndef WORKLOAD_H
#define WORKLOAD_H

#include <QSize>
#include <QString>

#include <nlohmann/json_fwd.hpp>

// The files that bench-workload makes, as its manifest (manifest.json in the
// workload folder) describes them. The full workload is what the figures in
// docs/performance.md are measured on; the smoke workload is small enough for
// the test command.
class Workload
{
public:
    enum Scale { Full, Smoke };

    // What the generator makes for a scale, in folder dir.
    static Workload planned(Scale scale, const QString& dir);
    // Reads dir/manifest.json; false with a message when it is missing or stale.
    static bool load(const QString& dir, Workload* workload, QString* error);
    bool save() const;
    bool sameAs(const Workload& other) const;

    QString comic() const;
    QString entriesComic() const;
    QString libraryDir() const;
    QString largeImage() const;
    // The big book, in the full workload only: many pages of the comic's
    // kind, at a quality that makes the file at least bigBookMinimumBytes.
    QString bigBook() const;
    static const qint64 bigBookMinimumBytes = qint64(2) << 30;
    // The big book's first pages alone: the same page 1 in a small book.
    QString bigBookStart() const;
    static const int bigBookStartPages = 10;
    // The entry name of a page of the comic, 0-based.
    static QString pageName(int index);
    // The big book's entry names have room for its page count.
    static QString bigPageName(int index);
    // The entries comic holds one folder per chapter of 100 pages, and one
    // metadata entry; the rest are pages.
    int entryChapters() const { return qMax(1, entries / 100); }
    int entryPages() const { return entries - entryChapters() - 1; }

    QString dir;
    QString scale;
    int comicPages = 0;
    QSize pageSize;
    int quality = 0;
    int entries = 0;
    int books = 0;
    int libraryPages = 0;
    QSize largeSize;
    int bigBookPages = 0;
    int bigBookQuality = 0;

private:
    // The manifest's fields: numbers, and the scale's name.
    nlohmann::json manifest() const;
};

#endif
