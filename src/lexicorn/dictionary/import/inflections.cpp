#include "lexicorn/dictionary/import/inflections.h"

namespace lexicorn::dictimport {

namespace {

bool isVowel(char c)
{
    return std::string_view("aeiou").find(c) != std::string_view::npos;
}

bool isPlainLowerWord(std::string_view word)
{
    if (word.size() < 2)
        return false;
    for (char c : word) {
        if (c < 'a' || c > 'z')
            return false;
    }
    return true;
}

int vowelGroups(std::string_view word)
{
    int groups = 0;
    bool inVowel = false;
    for (char c : word) {
        const bool vowel = isVowel(c) || c == 'y';
        if (vowel && !inVowel)
            ++groups;
        inVowel = vowel;
    }
    return groups;
}

// One syllable ending consonant-vowel-consonant doubles its last letter
// before -ed, -ing, -er: stop -> stopped, big -> bigger (not w, x, y).
bool doublesLastLetter(std::string_view word)
{
    const size_t n = word.size();
    if (n < 3 || vowelGroups(word) != 1)
        return false;
    const char last = word[n - 1];
    return !isVowel(last) && std::string_view("wxy").find(last) == std::string_view::npos && isVowel(word[n - 2])
        && !isVowel(word[n - 3]);
}

bool endsInConsonantY(std::string_view word)
{
    return word.size() >= 2 && word.ends_with('y') && !isVowel(word[word.size() - 2]);
}

std::string withS(std::string_view word)
{
    if (endsInConsonantY(word))
        return std::string(word.substr(0, word.size() - 1)) + "ies";
    for (const char* ending : {"s", "x", "z", "ch", "sh"}) {
        if (word.ends_with(ending))
            return std::string(word) + "es";
    }
    return std::string(word) + 's';
}

// The stem a vowel suffix (-ed, -ing, -er, -est) is added to.
std::string stemForVowelSuffix(std::string_view word)
{
    if (doublesLastLetter(word))
        return std::string(word) + word.back();
    if (word.ends_with('e') && !word.ends_with("ee"))
        return std::string(word.substr(0, word.size() - 1));
    return std::string(word);
}

std::string withSuffix(std::string_view word, std::string_view suffix)
{
    if (endsInConsonantY(word) && suffix != "ing")
        return std::string(word.substr(0, word.size() - 1)) + 'i' + std::string(suffix);
    if (suffix == "ing" && word.ends_with("ie"))
        return std::string(word.substr(0, word.size() - 2)) + "ying";
    return stemForVowelSuffix(word) + std::string(suffix);
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

std::vector<std::string> regularForms(std::string_view headword, WordClass wordClass)
{
    if (!isPlainLowerWord(headword) || wordClass == WordClass::Other)
        return {};
    const bool any = wordClass == WordClass::Unknown;
    std::vector<std::string> forms;
    if (any || wordClass == WordClass::Noun || wordClass == WordClass::Verb)
        forms.push_back(withS(headword));
    if (any || wordClass == WordClass::Verb) {
        forms.push_back(withSuffix(headword, "ed"));
        forms.push_back(withSuffix(headword, "ing"));
    }
    if (any || wordClass == WordClass::Adjective) {
        forms.push_back(withSuffix(headword, "er"));
        forms.push_back(withSuffix(headword, "est"));
    }
    return forms;
}

}  // namespace lexicorn::dictimport
