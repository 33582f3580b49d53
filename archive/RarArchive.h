// SPDX-License-Identifier: MIT
#ifndef RARARCHIVE_H
#define RARARCHIVE_H

#include "ComicArchive.h"

#include <QByteArray>

#include <optional>

// A comic packed as RAR (cbr), read through the "unrar" program beside the
// application: one run to list, one run per entry decoded, each waited for.
class RarArchive : public ComicArchive
{
public:
    explicit RarArchive(const QString& path);
    ~RarArchive() override;

    // The lines the extractor prints, empty parts kept.
    QStringList files() override;
    QImage data(const QString& name) override;

private:
    // The extractor's standard output; nothing when it could not start,
    // crashed, ran past the time limit or wrote more than limit bytes.
    std::optional<QByteArray> extract(const QStringList& arguments, qint64 limit) const;

    QString path;
};

#endif
