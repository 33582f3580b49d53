// SPDX-License-Identifier: MIT
#include "SessionTracer.h"

#include "Application.h"
#include "SwipeGesture.h"
#include "TapGesture.h"

#include "HostCompat.h"

using namespace TraceJson;

SessionTracer::SessionTracer(QObject* parent)
    : QObject(parent)
{
    HostTrace::setObserver(this);
    HostCompat::installMessageHandler(&SessionTracer::messageHandler);
    // The plug-in's debug lines belong to the trace; QT_LOGGING_RULES still
    // takes precedence.
    HostCompat::showDebugLines(true);
}

SessionTracer::~SessionTracer()
{
    HostCompat::installMessageHandler(nullptr);
    if (HostTrace::observer() == this)
        HostTrace::setObserver(nullptr);
}

void SessionTracer::watchView(QObject* view)
{
    // By name: the view's meta-object lives in the plug-in.
    connect(view, SIGNAL(prevChapter()), this, SLOT(prevChapter()));
    connect(view, SIGNAL(nextChapter()), this, SLOT(nextChapter()));
    connect(
        view, SIGNAL(footerEvent(QString, int, int)), this, SLOT(footerEvent(QString, int, int)));
    connect(view, SIGNAL(setChapterIndex(int)), this, SLOT(setChapterIndex(int)));
    connect(view, SIGNAL(setHeaderText(QString)), this, SLOT(setHeaderText(QString)));
    connect(view, SIGNAL(doneLoading()), this, SLOT(doneLoading()));
    connect(view, SIGNAL(allHighlightsLoaded()), this, SLOT(allHighlightsLoaded()));
    connect(view, SIGNAL(processSwipe(SwipeGesture*)), this, SLOT(processSwipe(SwipeGesture*)));
    connect(view, SIGNAL(processTap(TapGesture*)), this, SLOT(processTap(TapGesture*)));
}

void SessionTracer::watchParser(QObject* parser)
{
    connect(parser, SIGNAL(pageletParsed(Pagelet&)), this, SLOT(pageletParsed(Pagelet&)));
    connect(parser, SIGNAL(volumeParsed(Volume&, bool, bool)), this,
        SLOT(volumeParsed(Volume&, bool, bool)));
    connect(parser, SIGNAL(imageParsed(Volume, QImage)), this, SLOT(imageParsed(Volume, QImage)));
}

void SessionTracer::hostCall(const QString& name, const QVariantList& args)
{
    write(object(
        { { QStringLiteral("host"), string(name) }, { QStringLiteral("args"), values(args) } }));
}

void SessionTracer::result(const QString& command, const QVector<Member>& members)
{
    write(object(QVector<Member> { { QStringLiteral("result"), string(command) } } + members));
}

void SessionTracer::error(const QString& message, int line)
{
    write(object({ { QStringLiteral("error"), string(message) },
        { QStringLiteral("line"), number(line) } }));
}

void SessionTracer::prevChapter()
{
    signal("prevChapter", "view");
}

void SessionTracer::nextChapter()
{
    signal("nextChapter", "view");
}

void SessionTracer::footerEvent(const QString& title, int page, int numPages)
{
    signal("footerEvent", "view", { string(title), number(page), number(numPages) });
}

void SessionTracer::setChapterIndex(int index)
{
    signal("setChapterIndex", "view", { number(index) });
}

void SessionTracer::setHeaderText(const QString& text)
{
    signal("setHeaderText", "view", { string(text) });
}

void SessionTracer::doneLoading()
{
    signal("doneLoading", "view");
}

void SessionTracer::allHighlightsLoaded()
{
    signal("allHighlightsLoaded", "view");
}

void SessionTracer::processSwipe(SwipeGesture* swipe)
{
    signal("processSwipe", "view", { gesture(swipe) });
}

void SessionTracer::processTap(TapGesture* tap)
{
    signal("processTap", "view", { gesture(tap) });
}

void SessionTracer::pageletParsed(Pagelet& page)
{
    signal("pageletParsed", "parser", { pagelet(page) });
}

void SessionTracer::volumeParsed(Volume& book, bool hasRights, bool isLoan)
{
    signal("volumeParsed", "parser", { volume(book), boolean(hasRights), boolean(isLoan) });
}

void SessionTracer::imageParsed(const Volume& book, const QImage& cover)
{
    signal("imageParsed", "parser", { volume(book), image(cover) });
}

void SessionTracer::signal(const char* name, const char* from, const QVector<QByteArray>& args)
{
    write(object({ { QStringLiteral("signal"), string(QString::fromLatin1(name)) },
        { QStringLiteral("from"), string(QString::fromLatin1(from)) },
        { QStringLiteral("args"), array(args) } }));
}

void SessionTracer::write(const QByteArray& json)
{
    Application::print(json + '\n');
}

void SessionTracer::messageHandler(QtMsgType type, const QString& message)
{
    // Warnings and worse are for the person running the session.
    if (type != QtDebugMsg) {
        HostCompat::writeMessage(message);
        return;
    }
    QString text = message;
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    write(object({ { QStringLiteral("debug"), string(text) } }));
}
