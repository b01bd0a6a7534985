#include "dict_generator.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace lexicorn::bench {

namespace {

namespace fs = std::filesystem;

// splitmix64: tiny, fast and the same on every platform, unlike the
// standard distributions whose output is left to the library.
class Rng {
public:
    explicit Rng(uint64_t seed) : state_(seed) {}

    uint64_t next()
    {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

    // Uniform in [0, n).
    size_t below(size_t n) { return size_t((static_cast<unsigned __int128>(next()) * n) >> 64); }
    // Uniform in [lo, hi].
    size_t between(size_t lo, size_t hi) { return lo + below(hi - lo + 1); }
    bool percent(unsigned p) { return below(100) < p; }

    // An index drawn with the given relative weights.
    size_t weighted(std::initializer_list<unsigned> weights)
    {
        unsigned total = 0;
        for (unsigned w : weights)
            total += w;
        size_t roll = below(total);
        size_t index = 0;
        for (unsigned w : weights) {
            if (roll < w)
                return index;
            roll -= w;
            ++index;
        }
        return index - 1;
    }

    template <typename T>
    const T& pick(const std::vector<T>& items) { return items[below(items.size())]; }
    template <typename T, size_t N>
    const T& pick(const std::array<T, N>& items) { return items[below(N)]; }

private:
    uint64_t state_;
};

// Each file draws from its own stream, so changing one size leaves the other files as they were.
constexpr uint64_t headwordSeed = 0x4C6578696367726Eull;
constexpr uint64_t cacheSeed = 0x1D1C7CAC4E000001ull;
constexpr uint64_t rawSeed = 0x1D1C7CAC4E000002ull;
constexpr uint64_t formsSeed = 0x1D1C7CAC4E000003ull;
constexpr uint64_t lookupSeed = 0x1D1C7CAC4E000004ull;

// --- word material

constexpr auto onsets = std::to_array<std::string_view>({
    "", "", "", "b", "c", "d", "f", "g", "h", "j", "k", "l", "m", "n", "p", "r", "s", "t", "v", "w", "z",
    "bl", "br", "ch", "cl", "cr", "dr", "fl", "fr", "gl", "gr", "pl", "pr", "sc", "sh", "sl", "sp", "st", "str",
    "th", "tr", "wh"});
constexpr auto vowels = std::to_array<std::string_view>({"a", "e", "i", "o", "u", "a", "e", "i", "ai", "ea", "ee", "oo", "ou", "oa"});
constexpr auto codas = std::to_array<std::string_view>({"", "", "", "", "n", "r", "s", "t", "l", "m", "ck", "nd",
                                                 "ng", "nt", "rd", "rk", "sh", "st", "th", "x", "ll", "ss"});

constexpr auto ipaOnsets = std::to_array<std::string_view>({"b", "k", "d", "f", "ɡ", "h", "dʒ", "l", "m", "n", "p", "r", "s", "t", "v",
                                                     "w", "z", "bl", "br", "tʃ", "kl", "kr", "dr", "fl", "ɡr", "pl", "sk", "ʃ", "st", "θ"});
constexpr auto ipaVowels = std::to_array<std::string_view>({"æ", "e", "ɪ", "ɒ", "ʌ", "eɪ", "iː", "uː", "aʊ", "aɪ", "ə", "ɜː", "ɔː", "əʊ"});
constexpr auto ipaCodas = std::to_array<std::string_view>({"", "", "", "n", "r", "s", "t", "l", "m", "k", "ŋ", "st"});

// Frequent English words, so sentences read like dictionary prose.
constexpr auto commonWords = std::to_array<std::string_view>({
    "the", "a", "an", "of", "to", "in", "is", "was", "for", "on", "that", "with", "as", "by", "at", "from", "his", "her",
    "they", "we", "you", "it", "be", "have", "has", "had", "not", "but", "or", "which", "this", "someone", "something",
    "when", "if", "about", "very", "more", "used", "make", "made", "people", "time", "way", "into", "over", "after",
    "before", "other", "such", "only", "new", "good", "great", "small", "large", "place", "part", "kind", "thing",
    "especially", "usually", "often", "because", "between", "through", "without", "during", "feeling", "quality",
    "action", "state", "person", "group", "amount", "work", "money", "house", "water", "city", "children", "year",
    "day", "way", "said", "felt", "went", "came", "looked", "wanted", "there", "their", "them", "would", "could",
    "should", "all", "some", "many", "most", "much", "so", "too", "then", "than", "out", "up", "down", "again",
    "still", "never", "always", "well", "really", "quite", "almost", "government", "company", "country", "problem",
    "business", "school"});

// Common Chinese characters; definitions and translations are drawn from these.
constexpr std::string_view cjkText =
    "的一是不了人我在有他这中大来上国个到说们为子和你地出道也时年得就那要下以生会自着去之过家学对可她里后小么心多天而能好都然没日于起还发成事只作当想看文无开手十用主行方又如前所本见经头面公同三已老从动两长知民样现分将外但身些与高意进把法此实回二理美点月明其种声全工己话儿者向情部正名定女问力机给等几很业最间新什打便位因重被走电四第门相次东政海口使教西再平真听世气信北少关并内加化由却代军产入先山五太水万市眼体别处总才场师书比住员九笑性通目华报立马命张活难神数件安表原车白应路期叫死常提感金何更反合放做系计或司利受光王果亲界及今京务制解各任至清物台象记边共风战干接它许八特觉望直服毛林题建南度统色字请交爱让认算论百吃义科怎元社术结六功指思非流每青管夫连远资队跟带花快条院变联言权往展该领传近留红治决周保达办运武半候七必城父强步完革深区即求品士转量空甚众技轻程告江语英基派满式李息写呢识极令黄德收脸钱党倒未持音";

std::vector<std::string> splitCodePoints(std::string_view text)
{
    std::vector<std::string> out;
    for (size_t i = 0; i < text.size();) {
        const unsigned char lead = static_cast<unsigned char>(text[i]);
        const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        out.emplace_back(text.substr(i, length));
        i += length;
    }
    return out;
}

const std::vector<std::string>& cjkChars()
{
    static const std::vector<std::string> chars = splitCodePoints(cjkText);
    return chars;
}

struct Pos {
    std::string_view en;
    std::string_view cn;
};
constexpr auto cachePos = std::to_array<Pos>({{"noun", "名词"}, {"verb", "动词"}, {"adjective", "形容词"}, {"adverb", "副词"},
                                        {"noun", "名词"}, {"verb", "动词"}, {"preposition", "介词"}, {"phrasal verb", "短语动词"},
                                        {"pronoun", "代词"}, {"interjection", "感叹词"}});
constexpr auto rawPos = std::to_array<Pos>({{"N-COUNT", "可数名词"}, {"N-UNCOUNT", "不可数名词"}, {"VERB", "动词"}, {"V-T", "及物动词"},
                                      {"V-I", "不及物动词"}, {"ADJ", "形容词"}, {"ADV", "副词"}, {"PHRASE", "短语"},
                                      {"PREP", "介词"}, {"CONJ", "连词"}, {"N-COUNT", "可数名词"}, {"ADJ-GRADED", "形容词"}});
constexpr auto grams = std::to_array<std::string_view>({"[countable]", "[uncountable]", "[transitive]", "[intransitive]", "[C]",
                                                 "[U]", "[T]", "[I]", "[plural]", "[singular]"});
constexpr auto signposts = std::to_array<Pos>({{"MOVE", "移动"}, {"PERSON", "人"}, {"PLACE", "地方"}, {"MONEY", "钱"},
                                        {"FEELING", "感觉"}, {"TIME", "时间"}, {"AMOUNT", "数量"}, {"NOT SERIOUS", "不严肃"}});
constexpr auto stars = std::to_array<std::string_view>({"", "", "★", "★★", "★★★", "★★★★★"});

// A pseudo-word and the syllables it was built from.
struct Word {
    std::string text;
    std::vector<std::string> syllables;
};

Word makeWord(Rng& rng, size_t syllableCount)
{
    Word word;
    for (size_t i = 0; i < syllableCount; ++i) {
        std::string syllable(rng.pick(onsets));
        syllable += rng.pick(vowels);
        if (i + 1 == syllableCount || rng.percent(30))
            syllable += rng.pick(codas);
        word.text += syllable;
        word.syllables.push_back(std::move(syllable));
    }
    return word;
}

Word makeWord(Rng& rng)
{
    return makeWord(rng, 1 + rng.weighted({25, 47, 22, 6}));
}

std::string pronunciation(Rng& rng, size_t syllableCount)
{
    std::string out;
    const size_t stressed = rng.below(syllableCount);
    for (size_t i = 0; i < syllableCount; ++i) {
        if (i == stressed && syllableCount > 1)
            out += "ˈ";
        out += rng.pick(ipaOnsets);
        out += rng.pick(ipaVowels);
        out += rng.pick(ipaCodas);
    }
    return out;
}

// A sentence of English words, some invented, sometimes using the headword,
// now and then with quoted speech or a markup tag as dictionary text has.
std::string englishSentence(Rng& rng, const std::string& headword, size_t minWords, size_t maxWords, bool useHeadword)
{
    const size_t count = rng.between(minWords, maxWords);
    const size_t headwordAt = useHeadword ? rng.below(count) : count;
    const bool quoted = rng.percent(3);
    const bool tagged = !quoted && rng.percent(4);
    std::string out;
    for (size_t i = 0; i < count; ++i) {
        if (i > 0)
            out += ' ';
        if (i == headwordAt) {
            out += tagged ? "<b>" + headword + "</b>" : headword;
        } else if (rng.percent(20)) {
            out += makeWord(rng, 1 + rng.below(3)).text;
        } else {
            out += rng.pick(commonWords);
        }
        if (i == 1 && quoted)
            out += " \"";
    }
    if (quoted)
        out += '"';
    if (!out.empty() && out[0] >= 'a' && out[0] <= 'z')
        out[0] = char(out[0] - 'a' + 'A');
    out += '.';
    return out;
}

std::string chineseText(Rng& rng, size_t minChars, size_t maxChars, bool sentence)
{
    const size_t count = rng.between(minChars, maxChars);
    std::string out;
    for (size_t i = 0; i < count; ++i) {
        if (i > 2 && i + 2 < count && rng.percent(8))
            out += "，";
        out += rng.pick(cjkChars());
    }
    if (sentence)
        out += "。";
    return out;
}

// --- output

// Appends JSON text to a buffer and hands it to the file in large pieces.
class JsonFile {
public:
    explicit JsonFile(const fs::path& path) : path_(path), temp_(path.string() + ".partial")
    {
        file_ = std::fopen(temp_.c_str(), "wb");
        if (!file_)
            throw std::runtime_error("cannot write " + temp_.string());
        buffer_.reserve(bufferSize + 65536);
    }
    ~JsonFile()
    {
        if (file_) {
            std::fclose(file_);
            fs::remove(temp_);
        }
    }
    JsonFile(const JsonFile&) = delete;
    JsonFile& operator=(const JsonFile&) = delete;

    JsonFile& raw(std::string_view text)
    {
        buffer_ += text;
        return *this;
    }
    JsonFile& raw(char c)
    {
        buffer_ += c;
        return *this;
    }
    JsonFile& number(int64_t value)
    {
        buffer_ += std::to_string(value);
        return *this;
    }
    JsonFile& string(std::string_view text)
    {
        buffer_ += '"';
        for (char c : text) {
            switch (c) {
            case '"': buffer_ += "\\\""; break;
            case '\\': buffer_ += "\\\\"; break;
            case '\n': buffer_ += "\\n"; break;
            case '\t': buffer_ += "\\t"; break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", unsigned(c));
                    buffer_ += escaped;
                } else {
                    buffer_ += c;
                }
            }
        }
        buffer_ += '"';
        return *this;
    }
    // "key":"value"
    JsonFile& field(std::string_view key, std::string_view value)
    {
        string(key).raw(':').string(value);
        return *this;
    }

    size_t written() const { return flushed_ + buffer_.size(); }

    // Flushes when the buffer is full; call between entries.
    void maybeFlush()
    {
        if (buffer_.size() >= bufferSize)
            flush();
    }

    // Flushes, closes and moves the file to its real name.
    void finish()
    {
        flush();
        const bool ok = std::fclose(file_) == 0;
        file_ = nullptr;
        if (!ok)
            throw std::runtime_error("cannot write " + temp_.string());
        fs::rename(temp_, path_);
    }

private:
    static constexpr size_t bufferSize = size_t(4) << 20;

    void flush()
    {
        if (!buffer_.empty() && std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size())
            throw std::runtime_error("cannot write " + temp_.string());
        flushed_ += buffer_.size();
        buffer_.clear();
    }

    fs::path path_;
    fs::path temp_;
    std::FILE* file_ = nullptr;
    std::string buffer_;
    size_t flushed_ = 0;
};

// --- headwords

struct Headword {
    Word word;
    bool singleWord = true;
    bool link = false;  // filed as a cross-reference in the cache file
};

class HeadwordMaker {
public:
    HeadwordMaker() : rng_(headwordSeed) {}

    // A headword not made before: mostly single words, some phrases,
    // hyphenated compounds and capitalised names.
    Headword next()
    {
        for (;;) {
            Headword h;
            const size_t kind = rng_.weighted({880, 70, 30, 15, 5});
            h.word = makeWord(rng_);
            if (kind == 1 || kind == 2) {
                Word second = makeWord(rng_, 1 + rng_.below(2));
                h.word.text += kind == 1 ? ' ' : '-';
                h.word.text += second.text;
                for (std::string& s : second.syllables)
                    h.word.syllables.push_back(std::move(s));
                h.singleWord = false;
            } else if (kind == 3) {
                h.word.text[0] = char(h.word.text[0] - 'a' + 'A');
            } else if (kind == 4) {
                h.word.text += "é";
            }
            if (used_.insert(h.word.text).second)
                return h;
        }
    }

    bool used(const std::string& text) const { return used_.contains(text); }

private:
    Rng rng_;
    std::unordered_set<std::string> used_;
};

// --- the cache-shape file

void writeCacheEntry(JsonFile& out, Rng& rng, const Headword& h, bool small)
{
    const std::string& title = h.word.text;
    const Pos& pos = rng.pick(cachePos);
    const size_t syllables = h.word.syllables.size();
    std::string readings;
    if (syllables > 1 && rng.percent(60)) {
        for (size_t i = 0; i < syllables; ++i) {
            if (i > 0)
                readings += "‧";
            readings += h.word.syllables[i];
        }
    }
    const std::string bre = pronunciation(rng, syllables);
    const std::string ame = rng.percent(15) ? pronunciation(rng, syllables) : std::string();

    out.raw('{').field("title", title);
    out.raw(',').field("star", rng.pick(stars));
    out.raw(',').field("readings", readings);
    out.raw(',').field("brePron", bre);
    out.raw(',').field("amePron", ame);
    out.raw(",\"defs\":[");
    const size_t senses = small ? 1 : 1 + rng.weighted({57, 22, 10, 5, 3, 1, 1, 1});
    for (size_t d = 0; d < senses; ++d) {
        if (d > 0)
            out.raw(',');
        out.raw('{').field("def_cn", chineseText(rng, 2, 12, false));
        out.raw(',').field("def_en", englishSentence(rng, title, 3, 13, false));
        out.raw(",\"exts\":[");
        const size_t examples = small ? 0 : rng.weighted({52, 30, 11, 5, 2});
        for (size_t e = 0; e < examples; ++e) {
            if (e > 0)
                out.raw(',');
            out.raw('{').field("cn", chineseText(rng, 5, 15, true));
            out.raw(',').field("en", englishSentence(rng, title, 4, 12, true));
            std::string speaker;
            if (rng.percent(25)) {
                char name[40];
                std::snprintf(name, sizeof name, "p%03u-%09u.mp3", unsigned(rng.below(1000)), unsigned(rng.below(1000000000)));
                speaker = name;
            }
            out.raw(',').field("speaker", speaker).raw('}');
        }
        out.raw(']');
        const bool signpost = rng.percent(12);
        const Pos& sign = rng.pick(signposts);
        out.raw(',').field("subTitle", rng.percent(6) ? title + " " + std::string(rng.pick(commonWords)) : std::string());
        out.raw(',').field("signpos_cn", signpost ? sign.cn : std::string_view());
        out.raw(',').field("signpos_en", signpost ? sign.en : std::string_view());
        out.raw(',').field("gram", rng.percent(22) ? rng.pick(grams) : std::string_view()).raw('}');
    }
    out.raw(']');
    out.raw(',').field("pos_cn", pos.cn);
    out.raw(',').field("pos_en", pos.en).raw('}');
}

struct CacheResult {
    std::vector<Headword> headwords;
    size_t records = 0;
    size_t links = 0;
    size_t bytes = 0;
};

CacheResult writeCacheFile(const fs::path& path, double megabytes, HeadwordMaker& maker)
{
    const size_t target = size_t(megabytes * 1e6);
    JsonFile out(path);
    Rng rng(cacheSeed);
    CacheResult result;
    int64_t index = 0;
    out.raw('{');
    while (out.written() + 2 < target) {
        Headword h = maker.next();
        // A few percent are cross-references to an earlier headword (a
        // variant spelling or an irregular form pointing at its entry).
        h.link = result.headwords.size() > 100 && rng.percent(3);
        if (!result.headwords.empty())
            out.raw(',');
        out.string(h.word.text).raw(":[");
        if (h.link) {
            const Headword* linked = &result.headwords[rng.below(result.headwords.size())];
            for (int tries = 0; linked->link && tries < 8 && rng.percent(80); ++tries)
                linked = &result.headwords[rng.below(result.headwords.size())];
            out.raw("{\"index\":").number(index++).raw(',').field("word", h.word.text);
            out.raw(',').field("link", linked->word.text).raw(",\"enWords\":[");
            if (rng.percent(50))
                writeCacheEntry(out, rng, h, true);
            out.raw("]}");
            ++result.links;
            ++result.records;
        } else {
            // Homographs are filed as separate records under one headword.
            const size_t records = 1 + rng.weighted({190, 9, 1});
            for (size_t r = 0; r < records; ++r) {
                if (r > 0)
                    out.raw(',');
                out.raw("{\"index\":").number(index++).raw(',').field("word", h.word.text).raw(",\"enWords\":[");
                const size_t entries = 1 + rng.weighted({84, 13, 3});
                for (size_t e = 0; e < entries; ++e) {
                    if (e > 0)
                        out.raw(',');
                    writeCacheEntry(out, rng, h, false);
                }
                out.raw("]}");
            }
            result.records += records;
        }
        out.raw(']');
        result.headwords.push_back(std::move(h));
        out.maybeFlush();
    }
    out.raw('}');
    result.bytes = out.written();
    out.finish();
    return result;
}

// --- the raw-shape file

size_t writeRawFile(const fs::path& path, double megabytes, const std::vector<Headword>& known, HeadwordMaker& maker,
                    size_t& bytes)
{
    const size_t target = size_t(megabytes * 1e6);
    JsonFile out(path);
    Rng rng(rawSeed);
    size_t count = 0;
    // Mostly words the other dictionary has too, as two English dictionaries
    // would share, taken in a shuffled order so none repeats.
    std::vector<size_t> order(known.size());
    for (size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
        std::swap(order[i], order[rng.below(i + 1)]);
    }
    size_t nextKnown = 0;
    out.raw('{');
    while (out.written() + 2 < target) {
        Headword h = nextKnown < order.size() && rng.percent(90) ? known[order[nextKnown++]] : maker.next();
        if (count > 0)
            out.raw(',');
        out.string(h.word.text).raw(":{");
        out.field("star", rng.pick(stars)).raw(",\"readings\":[");
        const size_t readings = 1 + rng.weighted({80, 20});
        for (size_t r = 0; r < readings; ++r) {
            if (r > 0)
                out.raw(',');
            out.string(pronunciation(rng, h.word.syllables.size()));
        }
        out.raw("],\"defs\":[");
        const size_t senses = 1 + rng.weighted({30, 22, 15, 10, 8, 5, 4, 3, 2, 1});
        for (size_t d = 0; d < senses; ++d) {
            if (d > 0)
                out.raw(',');
            // A few senses carry no part of speech; the conversion leaves them out.
            const bool noPos = rng.percent(4);
            const Pos& pos = rng.pick(rawPos);
            out.raw('{').field("def_cn", chineseText(rng, 6, 24, false));
            out.raw(',').field("def_en", englishSentence(rng, h.word.text, 10, 28, true));
            out.raw(',').field("pos_cn", noPos ? std::string_view() : pos.cn);
            out.raw(',').field("pos_en", noPos ? std::string_view() : pos.en);
            out.raw(",\"ext\":[");
            const size_t examples = rng.weighted({30, 35, 22, 13});
            for (size_t e = 0; e < examples; ++e) {
                if (e > 0)
                    out.raw(',');
                out.raw('{').field("ext_cn", chineseText(rng, 8, 24, true));
                out.raw(',').field("ext_en", englishSentence(rng, h.word.text, 6, 16, true)).raw('}');
            }
            out.raw("]}");
        }
        out.raw("]}");
        ++count;
        out.maybeFlush();
    }
    out.raw('}');
    bytes = out.written();
    out.finish();
    return count;
}

// --- word forms

constexpr auto suffixes = std::to_array<std::string_view>({"s", "es", "ed", "ing", "er", "est", "ly", "s", "ed", "ing"});

struct Form {
    std::string form;
    const Headword* headword;
};

std::vector<Form> makeForms(size_t count, const std::vector<Headword>& headwords, HeadwordMaker& maker)
{
    Rng rng(formsSeed);
    std::vector<const Headword*> bases;
    for (const Headword& h : headwords) {
        if (h.singleWord && !h.link)
            bases.push_back(&h);
    }
    std::vector<Form> forms;
    forms.reserve(count);
    std::unordered_set<std::string> seen;
    if (bases.empty())
        return forms;
    size_t misses = 0;
    while (forms.size() < count && misses < count * 20 + 1000) {
        const Headword* base = rng.pick(bases);
        std::string form;
        if (rng.percent(8)) {
            form = makeWord(rng).text;  // an irregular form with nothing in common with its headword
        } else {
            form = base->word.text;
            const std::string_view suffix = rng.pick(suffixes);
            if (form.back() == 'e' && suffix[0] == 'e')
                form.pop_back();
            form += suffix;
        }
        if (maker.used(form) || !seen.insert(form).second) {
            ++misses;
            continue;
        }
        forms.push_back({std::move(form), base});
    }
    return forms;
}

void writeFormsFile(const fs::path& path, const std::vector<Form>& forms)
{
    JsonFile out(path);
    out.raw('{');
    for (size_t i = 0; i < forms.size(); ++i) {
        if (i > 0)
            out.raw(',');
        out.field(forms[i].form, forms[i].headword->word.text);
        out.maybeFlush();
    }
    out.raw('}');
    out.finish();
}

// --- lookup words

std::string capitalised(std::string text)
{
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z')
        text[0] = char(text[0] - 'a' + 'A');
    return text;
}

// What a reader taps: mostly headwords, some at the start of a sentence
// (capitalised), inflected forms, and a few words no dictionary has.
void writeWordsFile(const fs::path& path, size_t count, const std::vector<Headword>& headwords,
                    const std::vector<Form>& forms, HeadwordMaker& maker)
{
    Rng rng(lookupSeed);
    const fs::path temp = path.string() + ".partial";
    std::ofstream out(temp, std::ios::binary);
    if (!out)
        throw std::runtime_error("cannot write " + temp.string());
    std::string buffer;
    for (size_t i = 0; i < count; ++i) {
        const size_t kind = forms.empty() ? 0 : rng.weighted({70, 10, 12, 4, 4});
        std::string word;
        if (kind == 4) {
            do
                word = makeWord(rng).text;
            while (maker.used(word));
        } else if (kind >= 2) {
            word = rng.pick(forms).form;
        } else {
            word = rng.pick(headwords).word.text;
        }
        if (kind == 1 || kind == 3)
            word = capitalised(std::move(word));
        buffer += word;
        buffer += '\n';
    }
    out << buffer;
    out.close();
    if (!out)
        throw std::runtime_error("cannot write " + temp.string());
    fs::rename(temp, path);
}

}  // namespace

DataPaths::DataPaths(const fs::path& root)
    : root(root),
      dict(root / "Dict"),
      cache(dict / "LDOCE5_html.json"),
      raw(dict / "collins.json"),
      forms(dict / "wordforms.json"),
      words(root / "words.txt"),
      stamp(root / "complete.txt")
{
}

bool dataIsComplete(const DataPaths& paths)
{
    std::error_code error;
    return fs::exists(paths.stamp, error) && fs::exists(paths.cache, error) && fs::exists(paths.raw, error) &&
           fs::exists(paths.forms, error) && fs::exists(paths.words, error);
}

GeneratedData generateData(const DataPaths& paths, const GeneratorSizes& sizes, std::ostream* log)
{
    fs::create_directories(paths.dict);
    fs::remove(paths.stamp);
    GeneratedData data;
    HeadwordMaker maker;

    CacheResult cache = writeCacheFile(paths.cache, sizes.cacheMb, maker);
    data.cacheHeadwords = cache.headwords.size();
    data.cacheRecords = cache.records;
    data.cacheLinkRecords = cache.links;
    data.cacheBytes = cache.bytes;
    if (log)
        *log << "wrote " << paths.cache.string() << ": " << data.cacheBytes << " bytes, " << data.cacheHeadwords
             << " headwords, " << data.cacheRecords << " records (" << data.cacheLinkRecords << " links), "
             << (data.cacheHeadwords ? data.cacheBytes / data.cacheHeadwords : 0) << " bytes per headword" << std::endl;

    data.rawHeadwords = writeRawFile(paths.raw, sizes.rawMb, cache.headwords, maker, data.rawBytes);
    if (log)
        *log << "wrote " << paths.raw.string() << ": " << data.rawBytes << " bytes, " << data.rawHeadwords
             << " headwords" << std::endl;

    const std::vector<Form> forms = makeForms(sizes.forms, cache.headwords, maker);
    writeFormsFile(paths.forms, forms);
    data.forms = forms.size();
    if (log)
        *log << "wrote " << paths.forms.string() << ": " << data.forms << " forms" << std::endl;

    if (!cache.headwords.empty())
        writeWordsFile(paths.words, sizes.lookups, cache.headwords, forms, maker);
    data.lookups = cache.headwords.empty() ? 0 : sizes.lookups;
    if (log)
        *log << "wrote " << paths.words.string() << ": " << data.lookups << " lookup words" << std::endl;

    std::ofstream stamp(paths.stamp);
    stamp << "cache-mb " << sizes.cacheMb << "\nraw-mb " << sizes.rawMb << "\nforms " << sizes.forms << "\nlookups "
          << sizes.lookups << "\ncache-headwords " << data.cacheHeadwords << "\nraw-headwords " << data.rawHeadwords
          << '\n';
    if (!stamp.flush())
        throw std::runtime_error("cannot write " + paths.stamp.string());
    return data;
}

}  // namespace lexicorn::bench
