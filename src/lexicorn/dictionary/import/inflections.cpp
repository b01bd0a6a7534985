#include "lexicorn/dictionary/import/inflections.h"

#include <QStringList>

namespace lexicorn::dictimport {

namespace {

bool isVowel(QChar c)
{
    return QStringView(u"aeiou").contains(c);
}

bool isPlainLowerWord(const QString& word)
{
    if (word.size() < 2)
        return false;
    for (QChar c : word) {
        if (c < u'a' || c > u'z')
            return false;
    }
    return true;
}

int vowelGroups(const QString& word)
{
    int groups = 0;
    bool inVowel = false;
    for (QChar c : word) {
        const bool vowel = isVowel(c) || c == u'y';
        if (vowel && !inVowel)
            ++groups;
        inVowel = vowel;
    }
    return groups;
}

// One syllable ending consonant-vowel-consonant doubles its last letter
// before -ed, -ing, -er: stop -> stopped, big -> bigger (not w, x, y).
bool doublesLastLetter(const QString& word)
{
    const qsizetype n = word.size();
    if (n < 3 || vowelGroups(word) != 1)
        return false;
    const QChar last = word[n - 1];
    return !isVowel(last) && !QStringView(u"wxy").contains(last) && isVowel(word[n - 2]) && !isVowel(word[n - 3]);
}

bool endsInConsonantY(const QString& word)
{
    return word.size() >= 2 && word.endsWith(u'y') && !isVowel(word[word.size() - 2]);
}

QString withS(const QString& word)
{
    if (endsInConsonantY(word))
        return word.chopped(1) + QStringLiteral("ies");
    for (const char16_t* ending : {u"s", u"x", u"z", u"ch", u"sh"}) {
        if (word.endsWith(QStringView(ending)))
            return word + QStringLiteral("es");
    }
    return word + u's';
}

// The stem a vowel suffix (-ed, -ing, -er, -est) is added to.
QString stemForVowelSuffix(const QString& word, bool keepsFinalE)
{
    if (doublesLastLetter(word))
        return word + word.back();
    if (!keepsFinalE && word.endsWith(u'e') && !word.endsWith(QStringLiteral("ee")))
        return word.chopped(1);
    return word;
}

QString withSuffix(const QString& word, const QString& suffix)
{
    if (endsInConsonantY(word) && suffix != u"ing")
        return word.chopped(1) + u'i' + suffix;
    if (suffix == u"ing" && word.endsWith(QStringLiteral("ie")))
        return word.chopped(2) + QStringLiteral("ying");
    return stemForVowelSuffix(word, false) + suffix;
}

}  // namespace

WordClass wordClassOf(const QString& pos)
{
    const QString p = pos.trimmed().toLower();
    if (p.isEmpty())
        return WordClass::Unknown;
    if (p == u"n." || p == u"n" || p == u"noun" || p == u"pl.")
        return WordClass::Noun;
    if (p == u"v." || p == u"v" || p == u"vt." || p == u"vi." || p == u"verb")
        return WordClass::Verb;
    if (p == u"adj." || p == u"a." || p == u"a" || p == u"s" || p == u"adj" || p == u"adjective")
        return WordClass::Adjective;
    return WordClass::Other;
}

std::vector<QString> regularForms(const QString& headword, WordClass wordClass)
{
    if (!isPlainLowerWord(headword) || wordClass == WordClass::Other)
        return {};
    const bool any = wordClass == WordClass::Unknown;
    std::vector<QString> forms;
    if (any || wordClass == WordClass::Noun || wordClass == WordClass::Verb)
        forms.push_back(withS(headword));
    if (any || wordClass == WordClass::Verb) {
        forms.push_back(withSuffix(headword, QStringLiteral("ed")));
        forms.push_back(withSuffix(headword, QStringLiteral("ing")));
    }
    if (any || wordClass == WordClass::Adjective) {
        forms.push_back(withSuffix(headword, QStringLiteral("er")));
        forms.push_back(withSuffix(headword, QStringLiteral("est")));
    }
    return forms;
}

}  // namespace lexicorn::dictimport
