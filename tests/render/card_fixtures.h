#pragma once

// Shared pieces of the card tests: a home folder with the Anki settings made,
// notes written out by hand, sample dictionaries, and an Anki collection.

#include "support/server_process.h"
#include "support/temp_home.h"

#include "lexicorn/dictionary/records.h"
#include "lexicorn/render/dict_note.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <ostream>

// Failing comparisons of texts print the text.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace lexicorn::testing {

// The field name each content item is stored under in the tests: the
// setting's own name without "ANKISET_" ("EXPRESSION", "AUDIO", ...).
inline const QStringList contentItems{"EXPRESSION", "DEFINITIONS", "SENTENCE", "EXTRAINFO",
                                      "URL",        "DEFINITION",  "READING",  "AUDIO"};

// A fresh home with deck "Default", note type "Lexicorn card", one field per
// content item, the translator switched off and the voice service pointed at
// a closed port (so spoken audio comes from the offline voice).
class CardHome : public ::testing::Test {
protected:
    CardHome();
    void setVoiceHost(const QString& address);
    TempHome home_;
};

// While it lives, every alert is answered at once, as if the user pressed its
// button, and its message kept.
class AlertLog {
public:
    AlertLog();
    ~AlertLog();
    AlertLog(const AlertLog&) = delete;
    AlertLog& operator=(const AlertLog&) = delete;
    QStringList messages;
};

// A note with the given title, excerpt and comment texts (TextNote records,
// the first two in the groups the popup gives them).
NoteRecord noteWith(const QString& title, const QString& excerpt, const QStringList& comments, const QString& noteid = {});

// One comment record of any shape.
QJsonObject commentRecord(const QString& type, const QString& text, const QString& html = {});

// The sample dictionary files copied into the home's Dict folder, and the
// shared dictionary engine loaded with dictionary number 0 (LDOCE5) or 1
// (collins).
void loadSampleDictionary(int number);
QByteArray sampleFile(const QString& name);

// A real Anki collection in the home, served on 127.0.0.1, with the deck and
// a note type whose fields are contentItems; the client is pointed at it.
class AnkiCollection {
public:
    explicit AnkiCollection(const TempHome& home);
    bool ready() const { return ready_; }
    QString problem() { return peer_.errors(); }
    // The names of the files in the collection's media folder.
    QStringList mediaNames() const;
    // A media file's bytes; empty when there is none.
    QByteArray mediaFile(const QString& name) const;
    // Notes with a field holding text, found through the client.
    QJsonArray notesHolding(const QString& text);

protected:
    QString folder_;
    ServerProcess peer_;
    bool ready_ = false;
};

}  // namespace lexicorn::testing
