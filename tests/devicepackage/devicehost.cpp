// SPDX-License-Identifier: MIT
// The device's reading application in miniature, for the installed package:
// it loads the comics plug-in from the plugins folder beside itself with Qt's
// own loader, as the host does, parses one book and decodes its cover through
// the interfaces alone. Prints the pages and the cover's size, and writes the
// cover as PNG to COVER when given; exit status 0 when the book has pages and
// its cover decodes.
//
//   devicehost BOOK [COVER] -qws

#include "ParserInterface.h"
#include "PluginInterface.h"

#include <QApplication>
#include <QPluginLoader>
#include <QTextStream>

#include <cstdio>

class Book : public QObject
{
    Q_OBJECT

public:
    QStringList pages;
    QList<Volume> volumes;
    QImage cover;

public slots:
    void onPagelet(Pagelet& pagelet) { pages << pagelet.getId(); }
    void onVolume(Volume& volume, bool, bool) { volumes << volume; }
    void onImage(const Volume&, const QImage& image) { cover = image; }
};

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QTextStream out(stdout);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2 && arguments.size() != 3) {
        out << "usage: devicehost BOOK [COVER] -qws\n";
        return 2;
    }

    QPluginLoader loader(QCoreApplication::applicationDirPath()
        + QString::fromLatin1("/plugins/libcomicsreader.so"));
    PluginInterface* plugin = qobject_cast<PluginInterface*>(loader.instance());
    if (!plugin) {
        out << "not loaded: " << loader.errorString() << "\n";
        return 1;
    }

    ParserInterface* parser = plugin->parser();
    Book book;
    QObject::connect(parser, SIGNAL(pageletParsed(Pagelet&)), &book, SLOT(onPagelet(Pagelet&)));
    QObject::connect(parser, SIGNAL(volumeParsed(Volume&, bool, bool)), &book,
        SLOT(onVolume(Volume&, bool, bool)));
    QObject::connect(parser, SIGNAL(imageParsed(Volume, QImage)), &book,
        SLOT(onImage(Volume, QImage)));
    parser->parse(arguments.at(1));
    for (const QString& page : book.pages)
        out << "page " << page << "\n";
    if (book.volumes.size() == 1)
        parser->parseCoverImage(book.volumes.first());
    out << "cover " << book.cover.width() << "x" << book.cover.height() << "\n";
    if (arguments.size() == 3 && !book.cover.isNull() && !book.cover.save(arguments.at(2), "PNG")) {
        out << "cover not written to " << arguments.at(2) << "\n";
        return 1;
    }
    delete parser;
    return book.pages.isEmpty() || book.cover.isNull() ? 1 : 0;
}

#include "devicehost.moc"
