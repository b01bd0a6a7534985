#include "styled_pieces.h"

#include <QStringList>

namespace lexicorn::testing {

namespace {

QString colour(const Rgba& rgba)
{
    return QStringLiteral("%1,%2,%3,%4").arg(rgba.red).arg(rgba.green).arg(rgba.blue).arg(rgba.alpha);
}

}  // namespace

std::string describe(const TextAttributes& attributes)
{
    QStringList parts;
    if (attributes.foreground)
        parts << QStringLiteral("fg ") + colour(*attributes.foreground);
    if (attributes.fontSize)
        parts << QStringLiteral("%1pt").arg(*attributes.fontSize);
    if (attributes.fontName)
        parts << QStringLiteral("font ") + *attributes.fontName;
    if (attributes.bold)
        parts << QStringLiteral("bold");
    if (attributes.italic)
        parts << QStringLiteral("italic");
    if (attributes.background)
        parts << QStringLiteral("bg ") + colour(*attributes.background);
    return parts.join(u' ').toStdString();
}

std::string describe(const StyledText& text)
{
    std::string out;
    const QString& string = text.string();
    qsizetype at = 0;
    // Unstyled stretches lie between the runs.
    for (const StyledText::Run& run : text.runs()) {
        if (run.start > at)
            out += "«" + string.mid(at, run.start - at).toStdString() + "»";
        out += "«" + string.mid(run.start, run.length).toStdString() + "»{" + describe(run.attributes) + "}";
        at = run.start + run.length;
    }
    if (at < string.size())
        out += "«" + string.mid(at).toStdString() + "»";
    return out;
}

std::string describe(const Pieces& pieces)
{
    // Neighbouring pieces of equal attributes make one stretch.
    std::vector<std::pair<QString, TextAttributes>> joined;
    for (const auto& [text, attributes] : pieces) {
        if (text.isEmpty())
            continue;
        if (!joined.empty() && joined.back().second == attributes)
            joined.back().first += text;
        else
            joined.emplace_back(text, attributes);
    }
    std::string out;
    for (const auto& [text, attributes] : joined)
        out += "«" + text.toStdString() + "»" + (attributes.isEmpty() ? std::string() : "{" + describe(attributes) + "}");
    return out;
}

TextAttributes colourAndSize(int red, int green, int blue, double size, double alpha)
{
    TextAttributes attributes;
    attributes.foreground = Rgba{red, green, blue, alpha};
    attributes.fontSize = size;
    return attributes;
}

}  // namespace lexicorn::testing
