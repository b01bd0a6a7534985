#include "host/kit/styled_document.h"

#include <QFont>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QVariantList>

#include <algorithm>
#include <cmath>
#include <optional>

namespace lexicorn::host::ui {

namespace {

// A colour's exact components are kept beside the QColor (whose alpha has
// 16 bits), and used when reading back as long as the colour was not changed.
constexpr int foregroundRgbaProperty = QTextFormat::UserProperty + 0x4c01;
constexpr int backgroundRgbaProperty = QTextFormat::UserProperty + 0x4c02;
// A font size's exact value, beside the whole pixels Qt draws with.
constexpr int fontSizeProperty = QTextFormat::UserProperty + 0x4c03;

bool isTibetan(QChar c)
{
    return c.unicode() >= 0x0F00 && c.unicode() <= 0x0FFF;
}

QVariant rgbaVariant(const Rgba& colour)
{
    return QVariantList{colour.red, colour.green, colour.blue, colour.alpha};
}

std::optional<Rgba> storedRgba(const QTextCharFormat& format, int property, const QColor& shown)
{
    const QVariantList stored = format.property(property).toList();
    if (stored.size() != 4)
        return std::nullopt;
    const Rgba colour{stored[0].toInt(), stored[1].toInt(), stored[2].toInt(), stored[3].toDouble()};
    if (toQColor(colour) != shown)
        return std::nullopt;
    return colour;
}

}  // namespace

QColor toQColor(const Rgba& colour)
{
    QColor result(colour.red, colour.green, colour.blue);
    result.setAlphaF(static_cast<float>(std::clamp(colour.alpha, 0.0, 1.0)));
    return result;
}

Rgba toRgba(const QColor& colour)
{
    // Three decimals are as fine as an alpha set by hand gets.
    return {colour.red(), colour.green(), colour.blue(), std::round(colour.alphaF() * 1000.0) / 1000.0};
}

QTextCharFormat charFormatOf(const TextAttributes& attributes)
{
    QTextCharFormat format;
    if (attributes.foreground) {
        format.setForeground(toQColor(*attributes.foreground));
        format.setProperty(foregroundRgbaProperty, rgbaVariant(*attributes.foreground));
    }
    if (attributes.background) {
        format.setBackground(toQColor(*attributes.background));
        format.setProperty(backgroundRgbaProperty, rgbaVariant(*attributes.background));
    }
    // Sizes are in points of the styled text's own platform, where a point
    // is a logical pixel; Qt's points are larger (72 to the inch against 96
    // pixels), so the size goes in as pixels and its exact value alongside.
    if (attributes.fontSize) {
        format.setProperty(QTextFormat::FontPixelSize, std::max(1, qRound(*attributes.fontSize)));
        format.setProperty(fontSizeProperty, *attributes.fontSize);
    }
    if (attributes.fontName)
        format.setFontFamilies(QStringList{*attributes.fontName});
    if (attributes.bold)
        format.setFontWeight(QFont::Bold);
    if (attributes.italic)
        format.setFontItalic(true);
    return format;
}

TextAttributes attributesOf(const QTextCharFormat& format)
{
    TextAttributes attributes;
    if (format.hasProperty(QTextFormat::ForegroundBrush) && format.foreground().style() != Qt::NoBrush) {
        const QColor shown = format.foreground().color();
        attributes.foreground = storedRgba(format, foregroundRgbaProperty, shown).value_or(toRgba(shown));
    }
    if (format.hasProperty(QTextFormat::BackgroundBrush) && format.background().style() != Qt::NoBrush) {
        const QColor shown = format.background().color();
        attributes.background = storedRgba(format, backgroundRgbaProperty, shown).value_or(toRgba(shown));
    }
    if (format.hasProperty(fontSizeProperty))
        attributes.fontSize = format.doubleProperty(fontSizeProperty);
    else if (format.hasProperty(QTextFormat::FontPixelSize))
        attributes.fontSize = format.intProperty(QTextFormat::FontPixelSize);
    else if (format.hasProperty(QTextFormat::FontPointSize))
        attributes.fontSize = format.fontPointSize();
    if (format.hasProperty(QTextFormat::FontFamilies)) {
        const QStringList families = format.fontFamilies().toStringList();
        if (!families.isEmpty() && !families.front().isEmpty())
            attributes.fontName = families.front();
    }
    attributes.bold = format.hasProperty(QTextFormat::FontWeight) && format.fontWeight() >= QFont::DemiBold;
    attributes.italic = format.fontItalic();
    return attributes;
}

void setStyledText(QTextDocument& document, const StyledText& text)
{
    document.clear();
    // Laid out as the text views of the styled text's platform lay it out:
    // no inset above and below the lines, five points of padding at the sides.
    QTextFrameFormat frame = document.rootFrame()->frameFormat();
    frame.setTopMargin(0);
    frame.setBottomMargin(0);
    frame.setLeftMargin(5);
    frame.setRightMargin(5);
    document.rootFrame()->setFrameFormat(frame);
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    const QString& string = text.string();
    auto insert = [&](qsizetype from, qsizetype to, const TextAttributes& attributes) {
        if (to <= from)
            return;
        QString part = string.mid(from, to - from);
        part.replace(QLatin1Char('\n'), QChar::LineSeparator);
        const QTextCharFormat format = charFormatOf(attributes);
        if (!attributes.fontSize) {
            cursor.insertText(part, format);
            return;
        }
        // Tibetan signs (the part-of-speech marker) come from the one font
        // here that has them, whose lines are 2.4 em high: drawn smaller,
        // they leave the line its usual height. The exact size stays stored.
        QTextCharFormat sign = format;
        sign.setProperty(QTextFormat::FontPixelSize, std::max(1, qRound(*attributes.fontSize * 0.6)));
        qsizetype start = 0;
        while (start < part.size()) {
            const bool tibetan = isTibetan(part[start]);
            qsizetype end = start + 1;
            while (end < part.size() && isTibetan(part[end]) == tibetan)
                ++end;
            cursor.insertText(part.mid(start, end - start), tibetan ? sign : format);
            start = end;
        }
    };
    qsizetype position = 0;
    for (const StyledText::Run& run : text.runs()) {
        insert(position, run.start, {});
        insert(run.start, run.start + run.length, run.attributes);
        position = run.start + run.length;
    }
    insert(position, string.size(), {});
    cursor.endEditBlock();
}

StyledText styledTextOf(const QTextDocument& document)
{
    StyledText text;
    TextAttributes last;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block != document.begin())
            text.append(QStringLiteral("\n"), last);
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (!fragment.isValid())
                continue;
            QString part = fragment.text();
            part.replace(QChar::LineSeparator, QLatin1Char('\n'));
            last = attributesOf(fragment.charFormat());
            text.append(part, last);
        }
    }
    return text;
}

}  // namespace lexicorn::host::ui
