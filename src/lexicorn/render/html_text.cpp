#include "lexicorn/render/html_text.h"

#include "lexicorn/dictionary/text_helpers.h"

#include <vector>

namespace lexicorn {

namespace {

const QString boldOpen = QStringLiteral("<b>");
const QString boldClose = QStringLiteral("</b>");
const QString escapedBoldOpen = QStringLiteral("&lt;b&gt;");
const QString escapedBoldClose = QStringLiteral("&lt;/b&gt;");

// Private-use characters that stand for bold tags while a text is escaped
// (new ones, and the text's own); any the text brings along are dropped first.
const QChar openMarker(0xE000);
const QChar closeMarker(0xE001);
const QChar tagOpenMarker(0xE002);
const QChar tagCloseMarker(0xE003);

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c.isMark() || c == u'_';
}

// Starts of the whole-word occurrences of word in text, ignoring case.
std::vector<qsizetype> occurrences(const QString& text, const QString& word)
{
    std::vector<qsizetype> found;
    if (word.isEmpty())
        return found;
    const bool checkBefore = isWordCharacter(word.front());
    const bool checkAfter = isWordCharacter(word.back());
    qsizetype from = 0;
    while (true) {
        const qsizetype at = text.indexOf(word, from, Qt::CaseInsensitive);
        if (at < 0)
            break;
        const qsizetype end = at + word.size();
        const bool startsWord = !checkBefore || at == 0 || !isWordCharacter(text[at - 1]);
        const bool endsWord = !checkAfter || end == text.size() || !isWordCharacter(text[end]);
        if (startsWord && endsWord) {
            found.push_back(at);
            from = end;
        } else {
            from = at + 1;
        }
    }
    return found;
}

QString surround(const QString& text, const QString& word, const QString& open, const QString& close)
{
    QString candidate = word;
    std::vector<qsizetype> found = occurrences(text, candidate);
    for (const QString& variant : {deletingHyphen(word), deletingSpaceAndBr(deletingHyphen(word))}) {
        if (!found.empty())
            break;
        if (variant == candidate)
            continue;
        candidate = variant;
        found = occurrences(text, candidate);
    }
    if (found.empty())
        return text;
    QString out;
    out.reserve(text.size() + qsizetype(found.size()) * (open.size() + close.size()));
    qsizetype copied = 0;
    for (const qsizetype at : found) {
        out.append(QStringView(text).mid(copied, at - copied));
        out.append(open);
        out.append(QStringView(text).mid(at, candidate.size()));
        out.append(close);
        copied = at + candidate.size();
    }
    out.append(QStringView(text).mid(copied));
    return out;
}

}  // namespace

QString htmlEscape(const QString& text)
{
    QString out;
    out.reserve(text.size() + text.size() / 8);
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&': out.append(QLatin1StringView("&amp;")); break;
        case u'<': out.append(QLatin1StringView("&lt;")); break;
        case u'>': out.append(QLatin1StringView("&gt;")); break;
        case u'"': out.append(QLatin1StringView("&quot;")); break;
        case u'\'': out.append(QLatin1StringView("&#39;")); break;
        default: out.append(c);
        }
    }
    return out;
}

QString htmlEscapeEliminateB(const QString& text)
{
    QString out = htmlEscape(text);
    // "&" was escaped first, so an escaped tag here can only come from a real
    // "<b>" or "</b>" of the text, never from a text that spelt "&lt;b&gt;".
    if (out.contains(escapedBoldOpen) || out.contains(escapedBoldClose)) {
        out.replace(escapedBoldOpen, boldOpen);
        out.replace(escapedBoldClose, boldClose);
    }
    return out;
}

QString markBold(const QString& text, const QString& word, const QString& with)
{
    return surround(text, word, with, with);
}

QString markTohtmlBold(const QString& text)
{
    static const QString mark = QStringLiteral("**");
    QString out;
    out.reserve(text.size() + 8);
    qsizetype copied = 0;
    qsizetype open = -1;  // where an unpaired mark starts
    qsizetype at = text.indexOf(mark);
    while (at >= 0) {
        if (open < 0) {
            open = at;
        } else {
            out.append(QStringView(text).mid(copied, open - copied));
            out.append(boldOpen);
            out.append(QStringView(text).mid(open + mark.size(), at - open - mark.size()));
            out.append(boldClose);
            copied = at + mark.size();
            open = -1;
        }
        at = text.indexOf(mark, at + mark.size());
    }
    out.append(QStringView(text).mid(copied));
    return out;
}

QString htmlBoldWord(const QString& text, const QString& word)
{
    // The text's own bold tags and the new ones stand as private-use
    // characters while the word is looked for and the text escaped, so the
    // word is never found inside a tag and no tag is escaped.
    QString plain = text;
    for (const QChar marker : {openMarker, closeMarker, tagOpenMarker, tagCloseMarker})
        plain.remove(marker);
    plain.replace(boldOpen, QString(tagOpenMarker));
    plain.replace(boldClose, QString(tagCloseMarker));
    QString html = htmlEscape(surround(plain, word, QString(openMarker), QString(closeMarker)));
    html.replace(openMarker, boldOpen);
    html.replace(tagOpenMarker, boldOpen);
    html.replace(closeMarker, boldClose);
    html.replace(tagCloseMarker, boldClose);
    return html;
}

}  // namespace lexicorn
