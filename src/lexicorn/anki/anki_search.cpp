#include "lexicorn/anki/anki_search.h"

#include <QStringList>

namespace lexicorn {

namespace {

// Anki's wildcards, its quote and its escape character taken literally.
QString escaped(const QString& text, const QString& special)
{
    QString out;
    out.reserve(text.size() + 8);
    for (const QChar c : text) {
        if (special.contains(c))
            out += u'\\';
        out += c;
    }
    return out;
}

}  // namespace

QString fieldIsQuery(const QString& fieldName, const QString& content)
{
    return u'"' + escaped(fieldName, QStringLiteral("\\\"*_:")) + u':' + escaped(content, QStringLiteral("\\\"*_")) + u'"';
}

QString noteIdsQuery(const QJsonArray& noteIds)
{
    QStringList ids;
    for (const QJsonValue& id : noteIds)
        ids << QString::number(id.toInteger());
    return QStringLiteral("nid:") + ids.join(u',');
}

QString outsideDeckQuery(const QString& deckName)
{
    // A deck search takes in the deck's sub-decks too.
    return QStringLiteral("-\"deck:%1\"").arg(escaped(deckName, QStringLiteral("\\\"*_")));
}

QString anyCaseFilePattern(const QString& fileName)
{
    QString pattern;
    pattern.reserve(fileName.size() * 4);
    for (const QChar c : fileName) {
        const QChar lower = c.toLower();
        const QChar upper = c.toUpper();
        if (lower != upper)
            pattern += u'[' + QString(lower) + upper + u']';
        else if (c == u'*' || c == u'?' || c == u'[')
            pattern += u'[' + QString(c) + u']';
        else
            pattern += c;
    }
    return pattern;
}

}  // namespace lexicorn
