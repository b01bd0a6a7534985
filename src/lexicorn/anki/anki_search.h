#pragma once

// Pieces of Anki search queries built from text that may hold Anki's
// special characters.

#include <QJsonArray>
#include <QString>

namespace lexicorn {

// A search term that matches a field whose whole content is `content`
// (field names and ASCII letters compare without regard to case in Anki):
// "FIELD:CONTENT" in double quotes, with \ " * _ : escaped.
QString fieldIsQuery(const QString& fieldName, const QString& content);

// The notes with these ids: nid:1,2,3.
QString noteIdsQuery(const QJsonArray& noteIds);

// Cards outside the named deck and its sub-decks: -"deck:NAME".
QString outsideDeckQuery(const QString& deckName);

// An fnmatch pattern (as getMediaFilesNames takes) that matches this file
// name whatever the case of its letters.
QString anyCaseFilePattern(const QString& fileName);

}  // namespace lexicorn
