#include "lexicorn/reader/sentences/raw_line_format.h"

namespace lexicorn {

namespace {

bool isCjk(QChar c)
{
    const char16_t unit = c.unicode();
    return (unit >= 0x3000 && unit <= 0x9FFF) || (unit >= 0xFF00 && unit <= 0xFFEF);
}

// A hyphen that breaks a word across lines: after a letter, before a
// lower-case letter on the next line.
bool brokenWord(const QString& before, const QString& after)
{
    return before.size() >= 2 && before.back() == QLatin1Char('-') && before[before.size() - 2].isLetter() &&
           after.front().isLower();
}

}  // namespace

QStringList selectedLineTexts(const PageLines& lines, const QRectF& selection)
{
    QStringList texts;
    for (const CharLine& line : lines) {
        QString text;
        for (const CharRecord& record : line) {
            if (selection.contains(record.rect.center()))
                text.append(QChar(record.ch));
        }
        if (!text.isEmpty())
            texts.append(text);
    }
    return texts;
}

QString rawLineFormat(const PageLines& lines, const QRectF& selection)
{
    QString text;
    for (const QString& selected : selectedLineTexts(lines, selection)) {
        const QString piece = selected.simplified();
        if (piece.isEmpty())
            continue;
        if (brokenWord(text, piece))
            text.chop(1);
        else if (!text.isEmpty() && !(isCjk(text.back()) && isCjk(piece.front())))
            text.append(QLatin1Char(' '));
        text.append(piece);
    }
    return text;
}

}  // namespace lexicorn
