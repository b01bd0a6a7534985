#pragma once

// The records a dictionary entry is held in. They are reference objects:
// shared and mutable, so a change made through one holder is seen by all.

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace lexicorn {

struct EnWordExt;
struct EnWordDef;
struct EnWord;
struct EnWordData;
class DictData;

using EnWordExtPtr = std::shared_ptr<EnWordExt>;
using EnWordDefPtr = std::shared_ptr<EnWordDef>;
using EnWordPtr = std::shared_ptr<EnWord>;
using EnWordDataPtr = std::shared_ptr<EnWordData>;
using DictDataPtr = std::shared_ptr<DictData>;

using EnWordExtList = std::vector<EnWordExtPtr>;
using EnWordDefList = std::vector<EnWordDefPtr>;
using EnWordList = std::vector<EnWordPtr>;
using EnWordDataList = std::vector<EnWordDataPtr>;

// One example sentence of a sense.
struct EnWordExt {
    QString cn;
    QString en;
    QString speaker;
};

// One sense of an entry.
struct EnWordDef {
    QString def_cn;
    QString def_en;
    EnWordExtList exts;
    QString subTitle;
    QString signpos_cn;
    QString signpos_en;
    QString gram;
};

// One headword entry for one part of speech.
struct EnWord {
    // An entry made without senses holds the one shared default sense.
    explicit EnWord(QString title = {}, EnWordDefList defs = defaultDefs());

    // One list holding one empty sense, made on first use and shared by every
    // entry constructed without senses.
    static const EnWordDefList& defaultDefs();

    QString title;
    QString star;
    QString readings;
    QString brePron;
    QString amePron;
    EnWordDefList defs;
    QString pos_cn;
    QString pos_en;
};

// One record of the cache file.
struct EnWordData {
    int64_t index = 0;
    QString word;
    std::optional<QString> link;
    EnWordList enWords;
};

// The result of one lookup.
class DictData {
public:
    DictData(QString word, QString quoteSentence, EnWordList enWords);
    static DictDataPtr make(QString word, QString quoteSentence, EnWordList enWords);

    const QString& word() const { return word_; }
    const QString& quoteSentence() const { return quoteSentence_; }
    void setQuoteSentence(QString sentence) { quoteSentence_ = std::move(sentence); }
    const EnWordList& enWords() const { return enWords_; }

    // Where the looked-up word stands in the quote sentence, in UTF-16 units.
    struct Range {
        qsizetype start = -1;
        qsizetype length = 0;
        bool found() const { return start >= 0; }
        bool operator==(const Range&) const = default;
    };
    Range rangeOfWord() const;

    // The field markers of a dictionary card, shared by the popup rows, the
    // note format and every writer of dictionary notes.
    static inline const QString SEPA_End = QStringLiteral("🔚;");
    static inline const QString SEPA_Index = QStringLiteral("📇");
    static inline const QString SEPA_Pos = QStringLiteral("༒");
    static inline const QString SEPA_star = QStringLiteral("🔝");
    static inline const QString SEPA_Readings = QStringLiteral("🗣");
    static inline const QString SEPA_SP_En = QStringLiteral("💫");
    static inline const QString SEPA_SP_Cn = QStringLiteral("🌒");
    static inline const QString SEPA_Gram = QStringLiteral("🌓");
    static inline const QString SEPA_Def = QStringLiteral("🌕");
    static inline const QString SEPA_Def_Cn = QStringLiteral("🇨🇳");
    static inline const QString SEPA_Ext = QStringLiteral("📌");

private:
    QString word_;
    QString quoteSentence_;
    EnWordList enWords_;
};

// The two dictionaries, by their stored number.
class SelectDictType {
public:
    static std::optional<SelectDictType> fromRawValue(int64_t raw);
    static SelectDictType LDOCE5() { return SelectDictType(0); }
    static SelectDictType collins() { return SelectDictType(1); }

    int rawValue() const { return raw_; }
    QString name() const;
    QString fileName() const;
    bool operator==(const SelectDictType&) const = default;

private:
    explicit SelectDictType(int raw) : raw_(raw) {}
    int raw_;
};

// Dictionaries the raw format can describe.
enum class EnDict { Collins };
std::optional<EnDict> enDictFromRawValue(const QString& raw);
QString rawValue(EnDict dict);

// Error codes of the card code: 10000 a malformed card or an ambiguous Anki
// match, 20000 Anki not reachable.
enum class ErrorCode : int { structure = 10000, ankiUnreachable = 20000 };
std::optional<ErrorCode> errorCodeFromRawValue(int64_t raw);

// The error domain of the card code (the misspelt name is part of the interface).
inline const QString ERROR_DOMIN = QStringLiteral("com.ksw.hookNM");

}  // namespace lexicorn
