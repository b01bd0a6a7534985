#include "lexicorn/reader/sentences/broken_words.h"

namespace lexicorn {

namespace {

bool isLetter(char16_t c)
{
    return QChar(c).isLetter();
}

bool isHyphen(char16_t c)
{
    return c == u'-' || c == u'\u2010';
}

// The letters of the word that ends just before `end` (exclusive).
QString lettersBefore(const Sentence& sentence, std::size_t end)
{
    std::size_t start = end;
    while (start > 0 && isLetter(sentence[start - 1].ch))
        --start;
    QString word;
    for (std::size_t i = start; i < end; ++i)
        word.append(QChar(sentence[i].ch));
    return word;
}

// The letters of the word that starts at `start`.
QString lettersFrom(const Sentence& sentence, std::size_t start)
{
    QString word;
    for (std::size_t i = start; i < sentence.size() && isLetter(sentence[i].ch); ++i)
        word.append(QChar(sentence[i].ch));
    return word;
}

enum class Break { join, keepHyphen, asPrinted };

Break decide(const Sentence& sentence, std::size_t hyphen, const KnownWord& known)
{
    const bool between = hyphen > 0 && hyphen + 1 < sentence.size() && isLetter(sentence[hyphen - 1].ch)
        && isLetter(sentence[hyphen + 1].ch);
    if (!sentence[hyphen].lineEnd || !between)
        return Break::asPrinted;
    if (sentence[hyphen].ch == u'\u00AD')
        return Break::join;
    if (!isHyphen(sentence[hyphen].ch))
        return Break::asPrinted;
    const QString head = lettersBefore(sentence, hyphen);
    const QString tail = lettersFrom(sentence, hyphen + 1);
    if (known) {
        if (known((head + tail).toLower()))
            return Break::join;
        if (known((head + u'-' + tail).toLower()))
            return Break::keepHyphen;
    }
    return tail.front().isLower() ? Break::join : Break::keepHyphen;
}

}  // namespace

Sentence withBrokenWordsJoined(const Sentence& sentence, const KnownWord& known)
{
    Sentence joined;
    joined.reserve(sentence.size());
    for (std::size_t i = 0; i < sentence.size(); ++i) {
        switch (decide(sentence, i, known)) {
        case Break::join:
            break;
        case Break::keepHyphen:
            joined.push_back(sentence[i]);
            joined.back().lineEnd = false;
            break;
        case Break::asPrinted:
            joined.push_back(sentence[i]);
            break;
        }
    }
    return joined;
}

}  // namespace lexicorn
