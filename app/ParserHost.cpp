// SPDX-License-Identifier: MIT
#include "ParserHost.h"

#include "HostTrace.h"
#include "Library.h"
#include "ParserInterface.h"
#include "PluginInterface.h"

#include <memory>

ParserHost::ParserHost(PluginInterface* plugin, QObject* parent)
    : QObject(parent)
    , m_plugin(plugin)
{
}

ParserHost::~ParserHost() = default;

ParserInterface* ParserHost::createParser()
{
    ParserInterface* parser = m_plugin->parser();
    if (!parser)
        return nullptr;
    connect(parser, SIGNAL(pageletParsed(Pagelet&)), this, SLOT(pageletParsed(Pagelet&)));
    connect(parser, SIGNAL(volumeParsed(Volume&, bool, bool)), this,
        SLOT(volumeParsed(Volume&, bool, bool)));
    connect(parser, SIGNAL(imageParsed(Volume, QImage)), this, SLOT(imageParsed(Volume, QImage)));
    emit parserCreated(parser);
    return parser;
}

QVector<Volume> ParserHost::importFile(const QString& path, QString* error)
{
    m_pages.clear();
    m_stored.clear();
    m_storeError.clear();
    std::unique_ptr<ParserInterface> parser(createParser());
    if (parser)
        parser->parse(path);
    m_pages.clear(); // pages without a book after them are not stored
    if (error)
        *error = parser ? m_storeError : QStringLiteral("the plug-in gave no parser");
    return m_stored;
}

QImage ParserHost::coverImage(const Volume& volume)
{
    m_cover = QImage();
    std::unique_ptr<ParserInterface> parser(createParser());
    if (parser)
        parser->parseCoverImage(volume);
    return m_cover;
}

void ParserHost::pageletParsed(Pagelet& pagelet)
{
    m_pages << pagelet;
}

void ParserHost::volumeParsed(Volume& volume, bool, bool)
{
    HostTrace::Suppress ownBehalf;
    if (Library::storeBook(volume, m_pages))
        m_stored << Library::book(volume.getId());
    else
        m_storeError = QStringLiteral("cannot store the book: %1").arg(Library::lastError());
    m_pages.clear();
}

void ParserHost::imageParsed(const Volume&, const QImage& image)
{
    m_cover = image;
}
