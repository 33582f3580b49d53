// SPDX-License-Identifier: MIT
#ifndef SESSIONTRACER_H
#define SESSIONTRACER_H

#include "HostTrace.h"
#include "Pagelet.h"
#include "TraceJson.h"
#include "Volume.h"

#include <QObject>

class SwipeGesture;
class TapGesture;

// The trace of a session on standard output, one JSON object per line in the
// order things happen: the signals of the reading view and the parser, the
// plug-in's calls into the host, its debug lines, and the results and errors
// of the script's commands. Only one tracer may exist at a time.
class SessionTracer : public QObject, public HostObserver
{
    Q_OBJECT

public:
    explicit SessionTracer(QObject* parent = nullptr);
    ~SessionTracer() override;

    // Traces the nine signals of a reading view.
    void watchView(QObject* view);

    void hostCall(const QString& name, const QVariantList& args) override;

    // {"result": COMMAND, ...members}
    static void result(const QString& command, const QVector<TraceJson::Member>& members = {});
    // {"error": MESSAGE, "line": N}
    static void error(const QString& message, int line);

public slots:
    // Traces the three signals of a parser.
    void watchParser(QObject* parser);

private slots:
    void prevChapter();
    void nextChapter();
    void footerEvent(const QString& title, int page, int numPages);
    void setChapterIndex(int index);
    void setHeaderText(const QString& text);
    void doneLoading();
    void allHighlightsLoaded();
    void processSwipe(SwipeGesture* swipe);
    void processTap(TapGesture* tap);

    void pageletParsed(Pagelet& pagelet);
    void volumeParsed(Volume& volume, bool hasRights, bool isLoan);
    void imageParsed(const Volume& volume, const QImage& image);

private:
    static void signal(const char* name, const char* from, const QVector<QByteArray>& args = {});
    static void write(const QByteArray& json);
    static void messageHandler(
        QtMsgType type, const QString& message);
};

#endif
