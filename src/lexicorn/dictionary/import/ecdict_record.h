#pragma once

// Turns an ECDICT row into its cache record and word forms straight from the
// file's UTF-8 bytes: the same JSON CacheWriter::entry writes for the row's
// SourceEntry, without a QString for every field, line and sense on the way.
// Rows with text the UTF-8 helpers do not cover (utf8::isPlain) or with a
// sound file are left to the QString path.

#include "lexicorn/dictionary/import/inflections.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace lexicorn::dictimport::ecdict {

enum Column { Word, Phonetic, Definition, Translation, Pos, Collins, Oxford, Tag, Bnc, Frq, Exchange, Detail, Audio, ColumnCount };

// A row's fields by column, unquoted; empty for a column the file lacks.
using Fields = std::array<std::string_view, ColumnCount>;

// A piece of the text a RecordMaker appends to.
struct Span {
    size_t at = 0;
    size_t size = 0;
    std::string_view in(std::string_view text) const { return text.substr(at, size); }
};

struct FormSpan {
    Span form;
    Span headword;
};

struct Record {
    enum Kind {
        None,     // no entry: no senses, or a headword of blanks alone
        Skipped,  // an entry with nothing to show: it takes an index, no record
        Made,
    };
    Kind kind = None;
    Span headword;  // the key of the cache document
    Span json;      // what follows the record's index: `,"word":...}`
    unsigned wordClasses = 0;
};

// One per thread: it keeps its scratch space from row to row.
class RecordMaker {
public:
    static bool canMake(const Fields& fields);

    // `word` is the row's trimmed word, not empty. Appends the record and the
    // forms of the exchange column to `text`.
    Record make(const Fields& fields, std::string_view word, std::string& text, std::vector<FormSpan>& forms);

private:
    struct Line {
        std::string_view pos;
        std::string_view text;
        bool used = false;
    };
    struct Sense {
        std::string_view pos;
        std::string_view english;
        std::string_view chinese;
    };
    // What the QString functions say of a word that may be a part of speech.
    struct PartOfSpeech {
        std::string pos;
        bool isPart = false;  // takeLeadingPartOfSpeech takes it
        WordClass wordClass = WordClass::Unknown;
        std::string chineseJson;
    };
    struct Group {
        size_t part = 0;
        std::vector<size_t> senses;
    };

    size_t partOf(std::string_view pos);
    void linesOf(std::string_view field, std::vector<Line>& lines);
    Line* englishFor(std::string_view pos);
    void pairSenses(const Fields& fields);
    void groupSenses();
    void addForms(std::string_view word, std::string_view exchange, std::string& text, std::vector<FormSpan>& forms);
    void writeReadings(std::string_view phonetic);
    void writeEntries(std::string& text, std::string_view stars) const;

    std::vector<Line> english_;
    std::vector<Line> chinese_;
    std::vector<Sense> senses_;
    std::vector<Group> groups_;
    size_t groupCount_ = 0;
    std::vector<PartOfSpeech> parts_;  // the few a dictionary uses, looked up once
    std::string headwordJson_;
    std::string readingsJson_;
    std::string scratch_;
};

}  // namespace lexicorn::dictimport::ecdict
