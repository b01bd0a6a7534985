#include "lexicorn/dictionary/import/ecdict_record.h"

#include "lexicorn/dictionary/import/cache_writer.h"
#include "lexicorn/dictionary/import/html_senses.h"
#include "lexicorn/dictionary/import/utf8_text.h"

#include <QString>

#include <algorithm>
#include <cstring>

namespace lexicorn::dictimport::ecdict {

namespace {

Span append(std::string& text, std::string_view piece)
{
    const Span span{text.size(), piece.size()};
    text += piece;
    return span;
}

// A part of speech ("n.", "Vt.", "interj.") is a few ASCII letters and a
// final dot; anything else is no part, without asking the full list.
bool mayBePartOfSpeech(std::string_view token)
{
    if (token.size() < 2 || token.size() > 7 || token.back() != '.')
        return false;
    for (char c : token) {
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.'))
            return false;
    }
    return true;
}

// The stars of the Collins column: "3" -> 3. Anything but a lone digit is
// read as QString::toInt reads it.
int starsOf(std::string_view collins)
{
    if (collins.empty())
        return 0;
    if (collins.size() == 1 && collins[0] >= '0' && collins[0] <= '9')
        return collins[0] - '0';
    return QString::fromUtf8(collins.data(), qsizetype(collins.size())).trimmed().toInt();
}

// ECDICT writes some IPA symbols with the Cyrillic letters that look like
// them ("ә" for "ə"); the popup shows the IPA ones.
void appendIpa(std::string& out, std::string_view phonetic)
{
    struct Lookalike {
        char16_t cyrillic;
        const char* ipa;
    };
    static const Lookalike lookalikes[] = {
        {u'\u04D9', "\u0259"}, {u'\u04D8', "\u018F"}, {u'\u0430', "a"}, {u'\u0435', "e"},
        {u'\u043E', "o"},      {u'\u0440', "p"},      {u'\u0441', "c"}, {u'\u0443', "y"},
        {u'\u0445', "x"},      {u'\u0456', "i"},      {u'\u0458', "j"}, {u'\u0455', "s"},
    };
    for (size_t at = 0; at < phonetic.size(); ++at) {
        const auto lead = static_cast<unsigned char>(phonetic[at]);
        if (lead < 0xD0 || lead > 0xD3 || at + 1 >= phonetic.size()) {  // not U+0400..U+04FF
            out += phonetic[at];
            continue;
        }
        const auto code = char16_t(((lead & 0x1F) << 6) | (static_cast<unsigned char>(phonetic[at + 1]) & 0x3F));
        const char* ipa = nullptr;
        for (const Lookalike& l : lookalikes) {
            if (l.cyrillic == code)
                ipa = l.ipa;
        }
        if (ipa)
            out += ipa;
        else
            out.append(phonetic.substr(at, 2));
        ++at;
    }
}

}  // namespace

bool RecordMaker::canMake(const Fields& fields)
{
    for (Column c : {Word, Phonetic, Definition, Translation, Exchange}) {
        if (!utf8::isPlain(fields[c]))
            return false;
    }
    return fields[Audio].empty();
}

Record RecordMaker::make(const Fields& fields, std::string_view word, std::string& text, std::vector<FormSpan>& forms)
{
    addForms(word, fields[Exchange], text, forms);
    pairSenses(fields);
    if (senses_.empty() || utf8::cleansToNothing(word))
        return {};
    groupSenses();
    Record record;
    if (groupCount_ == 0) {
        record.kind = Record::Skipped;
        return record;
    }
    record.kind = Record::Made;
    scratch_.clear();
    utf8::appendClean(scratch_, word);
    record.headword = append(text, scratch_);
    headwordJson_.clear();
    utf8::appendJsonString(headwordJson_, scratch_);
    writeReadings(fields[Phonetic]);
    std::string stars;
    for (int n = starsOf(fields[Collins]), i = 0; n > 0 && n <= 5 && i < n; ++i)
        stars += "\u25CF";  // ●

    record.json.at = text.size();
    text += ",\"word\":";
    text += headwordJson_;
    text += ",\"enWords\":[";
    writeEntries(text, stars);
    text += "]}";
    record.json.size = text.size() - record.json.at;
    for (size_t g = 0; g < groupCount_; ++g)
        record.wordClasses |= 1u << unsigned(parts_[groups_[g].part].wordClass);
    return record;
}

size_t RecordMaker::partOf(std::string_view pos)
{
    for (size_t p = 0; p < parts_.size(); ++p) {
        if (parts_[p].pos == pos)
            return p;
    }
    const QString name = QString::fromUtf8(pos.data(), qsizetype(pos.size()));
    PartOfSpeech part{std::string(pos), false, wordClassOf(name), {}};
    if (!pos.empty()) {
        QString line = name;
        part.isPart = !takeLeadingPartOfSpeech(line).isEmpty();
    }
    utf8::appendJsonString(part.chineseJson, chinesePartOfSpeech(name).toStdString());
    parts_.push_back(std::move(part));
    return parts_.size() - 1;
}

// The lines of a field with their parts of speech, as posLines() in the
// QString reader: breaks written as "\n" or "\r\n" (two and four characters)
// or as real line breaks, blank lines left out.
void RecordMaker::linesOf(std::string_view field, std::vector<Line>& lines)
{
    lines.clear();
    size_t start = 0;
    const auto addLine = [&](size_t end) {
        const std::string_view line = utf8::trimmed(field.substr(start, end - start));
        if (line.empty())
            return;
        const size_t space = line.find(' ');
        const std::string_view first = line.substr(0, space);
        if (!mayBePartOfSpeech(first) || !parts_[partOf(first)].isPart) {
            lines.push_back({{}, line});
            return;
        }
        const std::string_view rest = space == std::string_view::npos ? std::string_view() : utf8::trimmed(line.substr(space + 1));
        if (!rest.empty())
            lines.push_back({first, rest});
    };
    // Breaks are rare beside the text: look for the next '\\' and '\n' with memchr.
    const char* data = field.data();
    const auto next = [&](char c, size_t from) {
        const void* found = from < field.size() ? std::memchr(data + from, c, field.size() - from) : nullptr;
        return found ? size_t(static_cast<const char*>(found) - data) : field.size();
    };
    size_t backslash = next('\\', 0);
    size_t newline = next('\n', 0);
    for (;;) {
        const size_t at = std::min(backslash, newline);
        if (at == field.size())
            break;
        size_t breakSize = 0;  // a lone backslash is text
        if (at == newline)
            breakSize = 1;
        else if (field.substr(at + 1, 3) == "r\\n")
            breakSize = 4;
        else if (field.substr(at + 1, 1) == "n")
            breakSize = 2;
        if (breakSize) {
            addLine(at);
            start = at + breakSize;
        }
        const size_t after = at + std::max<size_t>(breakSize, 1);
        if (backslash < after)
            backslash = next('\\', after);
        if (newline < after)
            newline = next('\n', after);
    }
    addLine(field.size());
}

// The English definition beside a translation line: the first unused one of
// the same part of speech, else of the same kind (vt. beside v.).
RecordMaker::Line* RecordMaker::englishFor(std::string_view pos)
{
    for (Line& line : english_) {
        if (!line.used && line.pos == pos)
            return &line;
    }
    const WordClass wanted = parts_[partOf(pos)].wordClass;
    if (wanted == WordClass::Unknown || wanted == WordClass::Other)
        return nullptr;
    for (Line& line : english_) {
        if (!line.used && parts_[partOf(line.pos)].wordClass == wanted)
            return &line;
    }
    return nullptr;
}

// Each translation line a sense, with the English beside it; English lines
// left over become senses of their own.
void RecordMaker::pairSenses(const Fields& fields)
{
    linesOf(fields[Definition], english_);
    linesOf(fields[Translation], chinese_);
    senses_.clear();
    for (const Line& chinese : chinese_) {
        Sense sense{chinese.pos, {}, chinese.text};
        if (Line* beside = englishFor(chinese.pos)) {
            beside->used = true;
            sense.english = beside->text;
        }
        senses_.push_back(sense);
    }
    for (const Line& line : english_) {
        if (!line.used)
            senses_.push_back({line.pos, line.text, {}});
    }
}

// One entry per part of speech, in the order the parts first appear; an
// entry keeps the senses with some text, and one without any is left out.
void RecordMaker::groupSenses()
{
    size_t groups = 0;
    for (size_t s = 0; s < senses_.size(); ++s) {
        const size_t part = partOf(senses_[s].pos);
        size_t g = 0;
        while (g < groups && groups_[g].part != part)
            ++g;
        if (g == groups) {
            if (groups_.size() == groups)
                groups_.emplace_back();
            groups_[groups].part = part;
            groups_[groups].senses.clear();
            ++groups;
        }
        if (!utf8::cleansToNothing(senses_[s].english) || !utf8::cleansToNothing(senses_[s].chinese))
            groups_[g].senses.push_back(s);
    }
    groupCount_ = 0;
    for (size_t g = 0; g < groups; ++g) {
        if (!groups_[g].senses.empty())
            std::swap(groups_[groupCount_++], groups_[g]);
    }
}

// "p:went/d:gone/i:going/3:goes" names the word's forms; "0:go" names the
// headword the word itself is a form of. "1" only says which kind of form
// that is, and is no word.
void RecordMaker::addForms(std::string_view word, std::string_view exchange, std::string& text, std::vector<FormSpan>& forms)
{
    const auto add = [&](std::string_view form, std::string_view headword) {
        FormSpan span;
        span.form.at = text.size();
        utf8::appendSimplified(text, form);
        span.form.size = text.size() - span.form.at;
        span.headword.at = text.size();
        utf8::appendSimplified(text, headword);
        span.headword.size = text.size() - span.headword.at;
        const std::string_view f = span.form.in(text);
        const std::string_view h = span.headword.in(text);
        if (f.empty() || h.empty() || f == h) {
            text.resize(span.form.at);
            return;
        }
        forms.push_back(span);
    };
    while (!exchange.empty()) {
        const size_t slash = exchange.find('/');
        const std::string_view item = exchange.substr(0, slash);
        exchange = slash == std::string_view::npos ? std::string_view() : exchange.substr(slash + 1);
        if (item.size() < 2 || item[1] != ':' || item[0] == ':')
            continue;
        const std::string_view value = utf8::trimmed(item.substr(2));
        if (value.empty())
            continue;
        if (item[0] == '0')
            add(word, value);
        else if (std::string_view("pdi3rts").find(item[0]) != std::string_view::npos)
            add(value, word);
    }
}

// Readings as the engine shows them, between slashes: "[rʌn]" and "rʌn" -> "/rʌn/".
void RecordMaker::writeReadings(std::string_view phonetic)
{
    std::string ipa;
    appendIpa(ipa, phonetic);
    scratch_.clear();
    utf8::appendClean(scratch_, ipa);
    readingsJson_.clear();
    std::string_view readings = scratch_;
    if (readings.empty()) {
        utf8::appendJsonString(readingsJson_, readings);
        return;
    }
    if (readings.size() >= 2 && readings.front() == '[' && readings.back() == ']')
        readings = utf8::trimmed(readings.substr(1, readings.size() - 2));
    if (readings.size() >= 2 && readings.front() == '/' && readings.back() == '/') {
        utf8::appendJsonString(readingsJson_, readings);
        return;
    }
    utf8::appendJsonString(readingsJson_, '/' + std::string(readings) + '/');
}

void RecordMaker::writeEntries(std::string& text, std::string_view stars) const
{
    for (size_t g = 0; g < groupCount_; ++g) {
        const PartOfSpeech& part = parts_[groups_[g].part];
        if (g)
            text += ',';
        text += "{\"title\":";
        text += headwordJson_;
        text += ",\"star\":";
        utf8::appendJsonString(text, stars);
        text += ",\"readings\":";
        text += readingsJson_;
        text += ",\"brePron\":\"\",\"amePron\":\"\",\"defs\":[";
        bool first = true;
        for (size_t s : groups_[g].senses) {
            if (!first)
                text += ',';
            first = false;
            text += "{\"def_cn\":";
            utf8::appendCleanJsonString(text, senses_[s].chinese);
            text += ",\"def_en\":";
            utf8::appendCleanJsonString(text, senses_[s].english);
            text += ",\"exts\":[],\"subTitle\":\"\",\"signpos_cn\":\"\",\"signpos_en\":\"\",\"gram\":\"\"}";
        }
        text += "],\"pos_cn\":";
        text += part.chineseJson;
        text += ",\"pos_en\":";
        utf8::appendCleanJsonString(text, part.pos);
        text += '}';
    }
}

}  // namespace lexicorn::dictimport::ecdict
