// SPDX-License-Identifier: MIT
#ifndef PARSERHOST_H
#define PARSERHOST_H

#include "Pagelet.h"
#include "Volume.h"

#include <QImage>
#include <QObject>
#include <QVector>

class ParserInterface;
class PluginInterface;

// The host's side of the plug-in's parser. Each request asks the plug-in for a
// new parser, connects to its signals by name (their meta-object lives in the
// plug-in) and calls it. Page records arrive before their book; they are
// kept until the book comes and then stored with it in one transaction.
class ParserHost : public QObject
{
    Q_OBJECT

public:
    explicit ParserHost(PluginInterface* plugin, QObject* parent = nullptr);
    ~ParserHost() override;

    // parse(path); returns the books stored, as the library now holds them.
    // None when the file yielded no pages; error then says why, if known.
    QVector<Volume> importFile(const QString& path, QString* error = nullptr);
    // parseCoverImage(volume); the image that imageParsed carried, null when none.
    QImage coverImage(const Volume& volume);

signals:
    // A new parser, before it is called: lets others watch its signals.
    void parserCreated(QObject* parser);

private slots:
    void pageletParsed(Pagelet& pagelet);
    void volumeParsed(Volume& volume, bool hasRights, bool isLoan);
    void imageParsed(const Volume& volume, const QImage& image);

private:
    ParserInterface* createParser();

    PluginInterface* m_plugin;
    QVector<Pagelet> m_pages;
    QVector<Volume> m_stored;
    QString m_storeError;
    QImage m_cover;
};

#endif
