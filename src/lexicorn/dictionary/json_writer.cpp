#include "lexicorn/dictionary/json_writer.h"

namespace lexicorn::json {

namespace {

void appendUtf8(std::string& out, char32_t code)
{
    if (code < 0x80) {
        out += char(code);
    } else if (code < 0x800) {
        out += char(0xC0 | (code >> 6));
        out += char(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += char(0xE0 | (code >> 12));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    } else {
        out += char(0xF0 | (code >> 18));
        out += char(0x80 | ((code >> 12) & 0x3F));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    }
}

void appendEscapedControl(std::string& out, char16_t unit)
{
    static const char hex[] = "0123456789abcdef";
    switch (unit) {
    case u'\n': out += "\\n"; return;
    case u'\r': out += "\\r"; return;
    case u'\t': out += "\\t"; return;
    case u'\b': out += "\\b"; return;
    case u'\f': out += "\\f"; return;
    default:
        out += "\\u00";
        out += hex[unit >> 4];
        out += hex[unit & 0xF];
    }
}

template <typename List, typename Append>
void appendList(std::string& out, const List& list, Append append)
{
    out += '[';
    bool first = true;
    for (const auto& item : list) {
        if (!first)
            out += ',';
        first = false;
        append(out, *item);
    }
    out += ']';
}

// Writes "key": "value" with a leading comma unless it opens the object.
void appendField(std::string& out, const char* key, const QString& value, bool first = false)
{
    if (!first)
        out += ',';
    out += '"';
    out += key;
    out += "\":";
    appendString(out, value);
}

}  // namespace

void appendString(std::string& out, QStringView text)
{
    out += '"';
    const qsizetype size = text.size();
    const char16_t* units = reinterpret_cast<const char16_t*>(text.utf16());
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t unit = units[i];
        if (unit == u'"') {
            out += "\\\"";
        } else if (unit == u'\\') {
            out += "\\\\";
        } else if (unit < 0x20) {
            appendEscapedControl(out, unit);
        } else if (QChar::isHighSurrogate(unit) && i + 1 < size && QChar::isLowSurrogate(units[i + 1])) {
            appendUtf8(out, QChar::surrogateToUcs4(unit, units[i + 1]));
            ++i;
        } else if (QChar::isSurrogate(unit)) {
            appendUtf8(out, 0xFFFD);  // a lone surrogate cannot be written as UTF-8
        } else {
            appendUtf8(out, unit);
        }
    }
    out += '"';
}

void appendEnWordExt(std::string& out, const EnWordExt& ext)
{
    out += '{';
    appendField(out, "cn", ext.cn, true);
    appendField(out, "en", ext.en);
    appendField(out, "speaker", ext.speaker);
    out += '}';
}

void appendEnWordDef(std::string& out, const EnWordDef& def)
{
    out += '{';
    appendField(out, "def_cn", def.def_cn, true);
    appendField(out, "def_en", def.def_en);
    out += ",\"exts\":";
    appendList(out, def.exts, appendEnWordExt);
    appendField(out, "subTitle", def.subTitle);
    appendField(out, "signpos_cn", def.signpos_cn);
    appendField(out, "signpos_en", def.signpos_en);
    appendField(out, "gram", def.gram);
    out += '}';
}

void appendEnWord(std::string& out, const EnWord& word)
{
    out += '{';
    appendField(out, "title", word.title, true);
    appendField(out, "star", word.star);
    appendField(out, "readings", word.readings);
    appendField(out, "brePron", word.brePron);
    appendField(out, "amePron", word.amePron);
    out += ",\"defs\":";
    appendList(out, word.defs, appendEnWordDef);
    appendField(out, "pos_cn", word.pos_cn);
    appendField(out, "pos_en", word.pos_en);
    out += '}';
}

void appendEnWordData(std::string& out, const EnWordData& data)
{
    out += "{\"index\":";
    out += std::to_string(data.index);
    appendField(out, "word", data.word);
    if (data.link)
        appendField(out, "link", *data.link);
    out += ",\"enWords\":";
    appendList(out, data.enWords, appendEnWord);
    out += '}';
}

void appendEnWordDataList(std::string& out, const EnWordDataList& list)
{
    appendList(out, list, appendEnWordData);
}

void appendDictData(std::string& out, const DictData& data)
{
    out += '{';
    appendField(out, "word", data.word(), true);
    appendField(out, "quoteSentence", data.quoteSentence());
    out += ",\"enWords\":";
    appendList(out, data.enWords(), appendEnWord);
    out += '}';
}

std::string encode(const DictData& data)
{
    std::string out;
    appendDictData(out, data);
    return out;
}

}  // namespace lexicorn::json
