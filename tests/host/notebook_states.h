#pragma once

// Notes whose every field follows from one number, the state: the crash test
// reads a note back and checks that all its fields agree on one state.

#include "host/notebook/mb_book_note.h"

#include <QJsonObject>

#include <optional>

namespace lexicorn::testing {

inline host::MbBookNote noteAtState(int index, long state)
{
    const QString s = QString::number(state);
    host::MbBookNote note;
    note.setNoteid(QStringLiteral("note-%1").arg(index));
    note.setNotetitle(QStringLiteral("note-%1 state %2").arg(index).arg(state));
    note.setHighlight_text(QStringLiteral("excerpt ") + s);
    note.setNotes({QJsonObject{{QStringLiteral("type"), QStringLiteral("TextNote")},
                               {QStringLiteral("group"), QStringLiteral("sentenceCN")},
                               {QStringLiteral("text"), s}},
                   QJsonObject{{QStringLiteral("type"), QStringLiteral("TextNote")},
                               {QStringLiteral("group"), QStringLiteral("exts")},
                               {QStringLiteral("text"), s.repeated(int(state % 50) + 1)}}});
    note.setMindSize({double(state), state + 0.5});
    note.setHighlightStyle(QStringLiteral("style-") + s);
    note.setBookMd5(QStringLiteral("book"));
    return note;
}

// The state a note was written at, when all its fields agree on one; nothing
// for a note that mixes states.
inline std::optional<long> stateOf(const host::MbBookNote& note)
{
    const QString id = note.noteid();
    if (!id.startsWith(QStringLiteral("note-")))
        return std::nullopt;
    bool ok = false;
    const int index = id.mid(5).toInt(&ok);
    if (!ok)
        return std::nullopt;
    const long state = note.notetitle().section(u' ', -1).toLong(&ok);
    if (!ok || !(note == noteAtState(index, state)))
        return std::nullopt;
    return state;
}

}  // namespace lexicorn::testing
