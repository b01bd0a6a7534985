#include "lexicorn/dictionary/import/html_senses.h"

#include "lexicorn/dictionary/records.h"

#include <QHash>
#include <QStringList>

#include <algorithm>

namespace lexicorn::dictimport {

namespace {

bool isCjk(char32_t c)
{
    return (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0x3400 && c <= 0x4DBF) || (c >= 0x20000 && c <= 0x2FA1F)
        || (c >= 0xF900 && c <= 0xFAFF) || (c >= 0x3000 && c <= 0x303F) || (c >= 0xFF00 && c <= 0xFFEF);
}

bool isLatinLetter(QChar c)
{
    return c.isLetter() && c.unicode() < 0x2E80;
}

// Named entities dictionary files use; anything else stays as written.
const QHash<QString, QString>& namedEntities()
{
    static const QHash<QString, QString> entities{
        {QStringLiteral("amp"), QStringLiteral("&")},      {QStringLiteral("lt"), QStringLiteral("<")},
        {QStringLiteral("gt"), QStringLiteral(">")},       {QStringLiteral("quot"), QStringLiteral("\"")},
        {QStringLiteral("apos"), QStringLiteral("'")},     {QStringLiteral("nbsp"), QStringLiteral(" ")},
        {QStringLiteral("middot"), QStringLiteral("·")},   {QStringLiteral("hellip"), QStringLiteral("…")},
        {QStringLiteral("mdash"), QStringLiteral("—")},    {QStringLiteral("ndash"), QStringLiteral("–")},
        {QStringLiteral("lsquo"), QStringLiteral("‘")},    {QStringLiteral("rsquo"), QStringLiteral("’")},
        {QStringLiteral("ldquo"), QStringLiteral("“")},    {QStringLiteral("rdquo"), QStringLiteral("”")},
        {QStringLiteral("laquo"), QStringLiteral("«")},    {QStringLiteral("raquo"), QStringLiteral("»")},
        {QStringLiteral("eacute"), QStringLiteral("é")},   {QStringLiteral("egrave"), QStringLiteral("è")},
        {QStringLiteral("aacute"), QStringLiteral("á")},   {QStringLiteral("agrave"), QStringLiteral("à")},
        {QStringLiteral("ouml"), QStringLiteral("ö")},     {QStringLiteral("uuml"), QStringLiteral("ü")},
        {QStringLiteral("auml"), QStringLiteral("ä")},     {QStringLiteral("ccedil"), QStringLiteral("ç")},
        {QStringLiteral("times"), QStringLiteral("×")},    {QStringLiteral("deg"), QStringLiteral("°")},
        {QStringLiteral("copy"), QStringLiteral("©")},     {QStringLiteral("reg"), QStringLiteral("®")},
        {QStringLiteral("bull"), QStringLiteral("•")},     {QStringLiteral("sect"), QStringLiteral("§")},
    };
    return entities;
}

// Decodes the entity starting at text[at] ('&'); appends it and returns the
// index after it, or appends '&' alone when no entity starts there.
qsizetype decodeEntity(const QString& text, qsizetype at, QString& out)
{
    const qsizetype semicolon = text.indexOf(u';', at + 1);
    if (semicolon < 0 || semicolon - at > 12) {
        out += u'&';
        return at + 1;
    }
    const QString name = text.mid(at + 1, semicolon - at - 1);
    if (name.startsWith(u'#')) {
        bool ok = false;
        const uint code = name.size() > 1 && (name[1] == u'x' || name[1] == u'X') ? name.mid(2).toUInt(&ok, 16)
                                                                                    : name.mid(1).toUInt(&ok, 10);
        if (ok && code > 0 && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF)) {
            const char32_t c = code;
            out += QString::fromUcs4(&c, 1);
            return semicolon + 1;
        }
    } else if (const auto found = namedEntities().constFind(name); found != namedEntities().constEnd()) {
        out += *found;
        return semicolon + 1;
    }
    out += u'&';
    return at + 1;
}

// Elements that end a line of text: each paragraph or list item becomes a sense.
bool isBlockTag(const QString& name)
{
    static const QStringList blocks{
        QStringLiteral("p"),  QStringLiteral("div"), QStringLiteral("li"), QStringLiteral("br"), QStringLiteral("hr"),
        QStringLiteral("ol"), QStringLiteral("ul"),  QStringLiteral("tr"), QStringLiteral("dd"), QStringLiteral("dt"),
        QStringLiteral("h1"), QStringLiteral("h2"),  QStringLiteral("h3"), QStringLiteral("h4"), QStringLiteral("h5"),
        QStringLiteral("h6"), QStringLiteral("blockquote"), QStringLiteral("table"), QStringLiteral("def"),
        QStringLiteral("ex"), QStringLiteral("dl"),
    };
    return blocks.contains(name);
}

// Elements whose content is not part of the entry's text.
bool isSkippedElement(const QString& name, Markup markup)
{
    if (name == u"script" || name == u"style" || name == u"head" || name == u"title")
        return true;
    // XDXF repeats the headword in <k> and writes the transcription in <tr>.
    return markup == Markup::Xdxf && (name == u"k" || name == u"tr");
}

struct Line {
    QString text;
    bool example = false;
};

class Splitter {
public:
    explicit Splitter(Markup markup) : markup_(markup) {}

    std::vector<Line> split(const QString& text)
    {
        qsizetype i = 0;
        const qsizetype size = text.size();
        while (i < size) {
            const QChar c = text[i];
            if (c == u'<' && markup_ != Markup::PlainText)
                i = tag(text, i);
            else if (c == u'&' && markup_ != Markup::PlainText)
                i = decodeEntity(text, i, current_);
            else if (c == u'\n' && markup_ != Markup::Html)
                endLine(), ++i;
            else
                current_ += c, ++i;
        }
        endLine();
        return std::move(lines_);
    }

private:
    qsizetype tag(const QString& text, qsizetype at)
    {
        if (text.mid(at, 4) == u"<!--") {
            const qsizetype end = text.indexOf(QStringLiteral("-->"), at + 4);
            return end < 0 ? text.size() : end + 3;
        }
        const qsizetype close = text.indexOf(u'>', at + 1);
        if (close < 0) {  // a lone '<' is text
            current_ += u'<';
            return at + 1;
        }
        qsizetype n = at + 1;
        const bool closing = n < close && text[n] == u'/';
        if (closing)
            ++n;
        const qsizetype nameStart = n;
        while (n < close && (text[n].isLetterOrNumber() || text[n] == u'_' || text[n] == u'-'))
            ++n;
        const QString name = text.mid(nameStart, n - nameStart).toLower();
        if (name.isEmpty()) {  // "a < b" and the like
            current_ += u'<';
            return at + 1;
        }
        const bool selfClosing = text[close - 1] == u'/';
        if (!closing && !selfClosing && isSkippedElement(name, markup_)) {
            const qsizetype end = text.indexOf(QStringLiteral("</") + name, close + 1, Qt::CaseInsensitive);
            if (end < 0)
                return text.size();
            const qsizetype endClose = text.indexOf(u'>', end);
            return endClose < 0 ? text.size() : endClose + 1;
        }
        if (isBlockTag(name)) {
            endLine();
            if (markup_ == Markup::Xdxf && name == u"ex")
                example_ = !closing;
        }
        return close + 1;
    }

    void endLine()
    {
        QString line = current_.simplified();
        current_.clear();
        if (!line.isEmpty())
            lines_.push_back({std::move(line), example_});
    }

    Markup markup_;
    QString current_;
    bool example_ = false;
    std::vector<Line> lines_;
};

// "1.", "2)", "(3)", "①": sense numbers the popup numbers by itself.
void dropSenseNumber(QString& line)
{
    qsizetype n = 0;
    const bool parenthesised = line.startsWith(u'(');
    if (parenthesised)
        ++n;
    const qsizetype digits = n;
    while (n < line.size() && line[n].isDigit() && n - digits < 3)
        ++n;
    if (n > digits && n < line.size() && (line[n] == u'.' || line[n] == u')') && (n + 1 == line.size() || line[n + 1].isSpace())) {
        line = line.mid(n + 1).trimmed();
        return;
    }
    if (!line.isEmpty() && line[0].unicode() >= 0x2460 && line[0].unicode() <= 0x2473)  // circled numbers
        line = line.mid(1).trimmed();
}

}  // namespace

QString plainTextOf(const QString& markup)
{
    QStringList parts;
    for (const Line& line : Splitter(Markup::Html).split(markup))
        parts.append(line.text);
    return parts.join(u' ');
}

QString withoutCardMarkers(const QString& text)
{
    static const QString markers[] = {DictData::SEPA_End, DictData::SEPA_Index, DictData::SEPA_Pos, DictData::SEPA_star,
                                      DictData::SEPA_Readings, DictData::SEPA_SP_En, DictData::SEPA_SP_Cn, DictData::SEPA_Gram,
                                      DictData::SEPA_Def, DictData::SEPA_Def_Cn, DictData::SEPA_Ext};
    // Every marker starts at or above U+0F00 (most are emoji): text below
    // that, which is nearly all of an English dictionary, skips the search.
    static const char16_t lowestStart = [] {
        char16_t lowest = 0xFFFF;
        for (const QString& marker : markers)
            lowest = std::min(lowest, marker.front().unicode());
        return lowest;
    }();
    QString clean = text;
    if (std::any_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() >= lowestStart; })) {
        for (const QString& marker : markers)
            clean.remove(marker);
    }
    for (QChar& c : clean) {
        if (c.unicode() < 0x20 && c != u'\n')
            c = u' ';  // a tab or a stray control character separates words
    }
    return clean;
}

QString takeLeadingPartOfSpeech(QString& line)
{
    static const QStringList parts{
        QStringLiteral("n."),    QStringLiteral("v."),    QStringLiteral("vt."),    QStringLiteral("vi."),
        QStringLiteral("adj."),  QStringLiteral("a."),    QStringLiteral("adv."),   QStringLiteral("ad."),
        QStringLiteral("prep."), QStringLiteral("conj."), QStringLiteral("pron."),  QStringLiteral("int."),
        QStringLiteral("interj."), QStringLiteral("num."), QStringLiteral("art."),  QStringLiteral("abbr."),
        QStringLiteral("aux."),  QStringLiteral("pl."),   QStringLiteral("det."),   QStringLiteral("modal."),
    };
    const qsizetype space = line.indexOf(u' ');
    const QString first = space < 0 ? line : line.left(space);
    if (!parts.contains(first.toLower()))
        return {};
    line = space < 0 ? QString() : line.mid(space + 1).trimmed();
    return first;
}

void splitEnglishAndChinese(const QString& line, QString& english, QString& chinese)
{
    english.clear();
    chinese.clear();
    const QList<uint> codes = line.toUcs4();
    qsizetype firstCjk = -1;
    qsizetype lastCjk = -1;
    for (qsizetype i = 0; i < codes.size(); ++i) {
        if (isCjk(codes[i])) {
            if (firstCjk < 0)
                firstCjk = i;
            lastCjk = i;
        }
    }
    if (firstCjk < 0) {
        english = line;
        return;
    }
    const QString before = QString::fromUcs4(reinterpret_cast<const char32_t*>(codes.constData()), firstCjk);
    const QString cjkPart = QString::fromUcs4(reinterpret_cast<const char32_t*>(codes.constData()) + firstCjk, lastCjk - firstCjk + 1);
    const QString after = QString::fromUcs4(reinterpret_cast<const char32_t*>(codes.constData()) + lastCjk + 1, codes.size() - lastCjk - 1);
    const bool latinBefore = std::any_of(before.begin(), before.end(), isLatinLetter);
    const bool latinAfter = std::any_of(after.begin(), after.end(), isLatinLetter);
    const bool latinBetween = std::any_of(cjkPart.begin(), cjkPart.end(), isLatinLetter);
    if (latinBetween) {  // both interleaved: kept as written
        chinese = line;
    } else if (latinBefore && !latinAfter) {  // "to run 跑"
        english = before.trimmed();
        chinese = (cjkPart + after).trimmed();
    } else if (!latinBefore && latinAfter) {  // "跑 to run"
        chinese = (before + cjkPart).trimmed();
        english = after.trimmed();
    } else {  // Chinese alone
        chinese = line.trimmed();
    }
}

std::vector<SourceSense> sensesFromMarkup(const QString& text, Markup markup)
{
    std::vector<SourceSense> senses;
    QString pos;
    for (Line& line : Splitter(markup).split(withoutCardMarkers(text))) {
        if (line.example && !senses.empty()) {
            senses.back().examples.push_back(line.text);
            continue;
        }
        dropSenseNumber(line.text);
        if (const QString leading = takeLeadingPartOfSpeech(line.text); !leading.isEmpty())
            pos = leading;
        if (line.text.isEmpty())  // a heading naming the part of speech of what follows
            continue;
        SourceSense sense;
        sense.pos = pos;
        splitEnglishAndChinese(line.text, sense.defEn, sense.defCn);
        senses.push_back(std::move(sense));
    }
    return senses;
}

}  // namespace lexicorn::dictimport
