// SPDX-License-Identifier: MIT
#ifndef SESSION_H
#define SESSION_H

#include "ParserHost.h"
#include "PluginState.h"
#include "SessionScript.h"
#include "SessionTracer.h"
#include "SessionView.h"

#include <QGenericArgument>
#include <QSize>
#include <QString>
#include <QStringList>

class PluginInterface;

// Plays the host around the plug-in, one script command at a time: imports and
// covers through the parser, and one reading view to open, turn, touch, zoom,
// paint and save. Everything the plug-in does shows in the trace.
class Session
{
public:
    Session(PluginInterface* plugin, const QSize& screen);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs one command; a command that cannot run prints an error line.
    void run(const ScriptLine& line);
    // Whether any line has failed so far.
    bool failed() const;

private:
    // Runs a command with its arguments; returns why it could not, or nothing.
    using Handler = QString (Session::*)(const QStringList& arguments);
    struct CommandSpec;
    static const CommandSpec* findCommand(const QString& name);
    QString dispatch(QStringList words);

    QString import(const QStringList& arguments);
    QString cover(const QStringList& arguments);
    QString open(const QStringList& arguments);
    QString openPage(const QStringList& arguments);
    QString openBookmark(const QStringList& arguments);
    QString openImage(const QStringList& arguments);
    QString close(const QStringList& arguments);
    QString next(const QStringList& arguments);
    QString prev(const QStringList& arguments);
    QString goTo(const QStringList& arguments);
    QString chapter(const QStringList& arguments);
    QString page(const QStringList& arguments);
    QString key(const QStringList& arguments);
    QString tap(const QStringList& arguments);
    QString swipe(const QStringList& arguments);
    QString drag(const QStringList& arguments);
    QString pinch(const QStringList& arguments);
    QString zoom(const QStringList& arguments);
    QString fitWidth(const QStringList& arguments);
    QString fitHeight(const QStringList& arguments);
    QString rotate(const QStringList& arguments);
    QString orientation(const QStringList& arguments);
    QString paint(const QStringList& arguments);
    QString screenshot(const QStringList& arguments);
    QString save(const QStringList& arguments);
    QString font(const QStringList& arguments);
    QString dogEarAdd(const QStringList& arguments);
    QString dogEarRemove(const QStringList& arguments);
    QString dogEarRemoveRecord(const QStringList& arguments);
    QString dogEarCheck(const QStringList& arguments);
    QString dogEarLoaded(const QStringList& arguments);
    QString dogEarKey(const QStringList& arguments);
    QString dogEarList(const QStringList& arguments);
    QString state(const QStringList& arguments);
    QString wait(const QStringList& arguments);

    // A new view with its signals traced; the error when there is none.
    QString openView();
    // Calls a slot of the view by name.
    QString invoke(const char* slot, QGenericArgument first = QGenericArgument(),
        QGenericArgument second = QGenericArgument(), QGenericArgument third = QGenericArgument());
    static bool toInt(const QString& text, int* value);
    static bool toReal(const QString& text, double* value);
    static QString badArgument(const QString& what, const QString& text);
    // The stored page record of that id; false when the library has none.
    static bool findPage(const QString& id, Pagelet* page);

    PluginState m_state;
    SessionTracer m_tracer;
    ParserHost m_parser;
    SessionView m_view;
    // The book last opened, or before any opening the last imported.
    QString m_bookId;
    bool m_failed = false;
};

#endif
