#include "lexicorn/render/markup.h"

#include <QStringView>

namespace lexicorn {

namespace {

const QString openingTag = QStringLiteral("<b>");
const QString closingTag = QStringLiteral("</b>");

// format with "%@" standing for text and "%%" for "%"; anything else is kept.
QString formatted(const QString& format, const QString& text)
{
    QString result;
    result.reserve(format.size() + text.size());
    for (qsizetype index = 0; index < format.size(); ++index) {
        const QChar unit = format[index];
        if (unit == u'%' && index + 1 < format.size()) {
            const QChar next = format[index + 1];
            if (next == u'@') {
                result.append(text);
                ++index;
                continue;
            }
            if (next == u'%') {
                result.append(u'%');
                ++index;
                continue;
            }
        }
        result.append(unit);
    }
    return result;
}

bool isBoldLike(const TextAttributes& attributes, unsigned mask)
{
    return (attributes.fontName && attributes.fontName->contains(QStringLiteral("Medium")))
        || (attributes.symbolicTraits() & mask) != 0;
}

bool isBlank(QStringView text)
{
    for (const QChar unit : text) {
        if (!unit.isSpace())
            return false;
    }
    return true;
}

// The piece in the bold form of the font at its start (same name, size and
// italic trait), drawn red; other attributes (a background) stay.
StyledText inBoldRed(const StyledText& piece)
{
    const TextAttributes font = piece.attributesAt(0);
    const auto restyled = [&font](TextAttributes attributes) {
        attributes.fontName = font.fontName;
        attributes.fontSize = font.fontSize;
        attributes.italic = font.italic;
        attributes.bold = true;
        attributes.foreground = Rgba{255, 0, 0};
        return attributes;
    };
    const QString& string = piece.string();
    StyledText bold;
    qsizetype at = 0;
    for (const StyledText::Run& run : piece.runs()) {
        bold.append(string.mid(at, run.start - at), restyled({}));
        bold.append(string.mid(run.start, run.length), restyled(run.attributes));
        at = run.start + run.length;
    }
    bold.append(string.mid(at), restyled({}));
    return bold;
}

struct Tag {
    bool opening;
    qsizetype start;
    qsizetype length;
};

}  // namespace

QString pdfRepair(const QString& text)
{
    QString repaired = text;
    repaired.replace(QStringLiteral("i  "), QStringLiteral("i"));
    repaired.replace(QStringLiteral("l  "), QStringLiteral("l"));
    return repaired;
}

bool isChinese(const QString& text)
{
    // The same test as matching the whole text against "(^[一-龥]+$)": the
    // class holds only BMP characters, so it can be made unit by unit.
    if (text.isEmpty())
        return false;
    for (const QChar unit : text) {
        if (unit.unicode() < 0x4E00 || unit.unicode() > 0x9FA5)
            return false;
    }
    return true;
}

bool includeChinese(const QString& text)
{
    for (const QChar unit : text) {
        if (quint16(unit.unicode() - 0x4E01) <= 20989)
            return true;
    }
    return false;
}

std::vector<TextRange> rangesOfTextTrait(const StyledText& text, unsigned mask)
{
    std::vector<TextRange> ranges;
    const QString& string = text.string();
    for (const StyledText::Run& run : text.runs()) {
        if (!isBoldLike(run.attributes, mask))
            continue;
        if (!ranges.empty()) {
            TextRange& last = ranges.back();
            const qsizetype lastEnd = last.start + last.length;
            if (isBlank(QStringView(string).mid(lastEnd, run.start - lastEnd))) {
                last.length = run.start + run.length - last.start;
                continue;
            }
        }
        ranges.push_back({run.start, run.length});
    }
    return ranges;
}

QString highlighTextWithFormat(const StyledText& text, const QString& format)
{
    QString result = text.string();
    const std::vector<TextRange> ranges = rangesOfTextTrait(text, boldTrait);
    // From the last range to the first, so the earlier ranges stay valid.
    for (auto range = ranges.rbegin(); range != ranges.rend(); ++range)
        result.replace(range->start, range->length, formatted(format, result.mid(range->start, range->length)));
    return result;
}

StyledText attrTextFromBoldTagText(const StyledText& text)
{
    const QString& string = text.string();
    std::vector<Tag> tags;
    for (qsizetype index = 0; index < string.size(); ++index) {
        const QStringView rest = QStringView(string).mid(index);
        if (rest.startsWith(openingTag))
            tags.push_back({true, index, openingTag.size()});
        else if (rest.startsWith(closingTag))
            tags.push_back({false, index, closingTag.size()});
    }

    std::vector<TextRange> boldRanges;
    for (std::size_t index = 0; index + 1 < tags.size(); ++index) {
        if (tags[index].opening && !tags[index + 1].opening) {
            const qsizetype start = tags[index].start + tags[index].length;
            boldRanges.push_back({start, tags[index + 1].start - start});
        }
    }

    StyledText result = text;
    for (auto range = boldRanges.rbegin(); range != boldRanges.rend(); ++range) {
        if (range->length > 0)
            result.replace(range->start, range->length, inBoldRed(result.mid(range->start, range->length)));
    }
    // From the last tag to the first, so the earlier tags stay where they were found.
    for (auto tag = tags.rbegin(); tag != tags.rend(); ++tag)
        result.replace(tag->start, tag->length, StyledText());
    return result;
}

}  // namespace lexicorn
