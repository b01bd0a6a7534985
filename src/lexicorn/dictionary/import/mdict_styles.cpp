#include "lexicorn/dictionary/import/mdict_styles.h"

#include <QStringList>

#include <algorithm>

namespace lexicorn::dictimport::mdict {

namespace {

// Style numbers are small; a longer run of digits is read but matches none.
constexpr quint32 noStyle = 0xffffffffu;

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

}  // namespace

StyleSheet StyleSheet::parse(const QString& text)
{
    StyleSheet sheet;
    QStringList lines = text.split(u'\n');
    for (QString& line : lines) {
        if (line.endsWith(u'\r'))
            line.chop(1);
    }
    qsizetype i = 0;
    while (i < lines.size()) {
        bool numeric = false;
        const quint32 number = lines[i].trimmed().toUInt(&numeric);
        if (!numeric || number == noStyle) {
            ++i;
            continue;
        }
        const QString open = i + 1 < lines.size() ? lines[i + 1] : QString();
        const QString close = i + 2 < lines.size() ? lines[i + 2] : QString();
        sheet.styles_.insert(number, {open, close});
        i += 3;
    }
    return sheet;
}

QString StyleSheet::expand(const QString& entry) const
{
    if (styles_.isEmpty() || !entry.contains(u'`'))
        return entry;

    QString out;
    out.reserve(entry.size() * 2);
    QString closing;  // of the style the text being copied is in
    qsizetype copied = 0;
    qsizetype from = 0;
    const qsizetype size = entry.size();
    for (qsizetype mark; (mark = entry.indexOf(u'`', from)) >= 0;) {
        qsizetype end = mark + 1;
        quint64 number = 0;
        while (end < size && isDigit(entry[end])) {
            number = std::min<quint64>(number * 10 + quint64(entry[end].unicode() - u'0'), noStyle);
            ++end;
        }
        if (end == mark + 1 || end >= size || entry[end] != u'`') {
            from = mark + 1;  // a backtick that starts no mark is text
            continue;
        }
        out.append(QStringView(entry).mid(copied, mark - copied));
        out.append(closing);
        const auto style = styles_.constFind(quint32(number));
        if (style != styles_.constEnd()) {
            out.append(style->first);
            closing = style->second;
        } else {
            closing.clear();
        }
        copied = from = end + 1;
    }
    out.append(QStringView(entry).mid(copied));
    out.append(closing);
    return out;
}

}  // namespace lexicorn::dictimport::mdict
