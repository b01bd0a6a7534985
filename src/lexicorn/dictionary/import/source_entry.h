#pragma once

// What a reader of a dictionary file hands on: entries as the file writes
// them, word forms and sound resources. One reader per format
// (stardict_reader, mdict_reader, ecdict_reader, wordnet_reader); the
// converter (dictionary_import) turns their entries into the cache shape the
// engine reads.

#include <QByteArray>
#include <QString>

#include <stdexcept>
#include <vector>

namespace lexicorn::dictimport {

// How an entry's text is written.
enum class Markup {
    PlainText,  // lines of text (StarDict 'm', WordNet glosses)
    Html,       // StarDict 'h', MDict
    Xdxf,       // StarDict 'x'
    Pango,      // StarDict 'g'
};

// A sense a format already keeps apart from the others (ECDICT, WordNet).
struct SourceSense {
    QString pos;    // part of speech as the file names it ("n.", "verb")
    QString defEn;  // English definition
    QString defCn;  // Chinese translation
    std::vector<QString> examples;  // English examples
};

// One entry of a file. Either a cross-reference (linkTo set), or a body in
// `text` / `markup`, or senses the format already separates (`senses`).
struct SourceEntry {
    QString headword;
    QString linkTo;     // non-empty: this headword stands for that one (synonyms, @@@LINK=)
    QString text;
    Markup markup = Markup::PlainText;
    std::vector<SourceSense> senses;
    QString readings;   // pronunciation as the file gives it, e.g. "/ˈwɜːd/"
    QString stars;      // frequency stars, "●●●" style, when the file rates words
    QString sound;      // a sound resource the entry names ("sound://x.mp3" → "x.mp3")
};

// Where a reader puts what it reads, in file order.
class ImportSink {
public:
    virtual ~ImportSink() = default;
    virtual void entry(SourceEntry entry) = 0;
    // An inflected form and its headword ("went" → "go").
    virtual void wordForm(const QString& form, const QString& headword) = 0;
    // A resource file bundled with the dictionary (MDict's .mdd sounds).
    virtual void resource(const QString& name, const QByteArray& bytes) = 0;
    // How far the reader is through the file, in units it chooses (bytes or entries).
    virtual void progress(qint64 done, qint64 total) = 0;
    // Something in the file was taken as well as it could be (a row short of
    // fields): the import goes on, and the user is told, naming the place.
    virtual void warning(const QString& message) { (void)message; }
};

// A file that cannot be read as its format: says which file and where
// (entry, line or byte offset) in the message.
class ImportError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace lexicorn::dictimport
