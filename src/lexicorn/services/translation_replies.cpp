#include "lexicorn/services/translation_replies.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace lexicorn {

namespace {

// The text between the first opening tag and the last closing tag of a line;
// empty when they are missing or out of order.
QString textBetweenTags(const QString& line, QStringView open, QStringView close)
{
    const qsizetype start = line.indexOf(open);
    const qsizetype end = line.lastIndexOf(close);
    if (start < 0 || end < start + open.size())
        return QString();
    return line.mid(start + open.size(), end - start - open.size());
}

qsizetype indexOfLineContaining(const QStringList& lines, QStringView needle, qsizetype from = 0)
{
    for (qsizetype i = from; i < lines.size(); ++i) {
        if (lines[i].contains(needle))
            return i;
    }
    return -1;
}

// The machine translation block of a sentence's page.
QString youdaoSentenceTranslation(const QStringList& lines)
{
    const qsizetype block = indexOfLineContaining(lines, u"id=\"fanyiToggle\"");
    if (block < 0)
        return QString();
    for (qsizetype i = block + 1; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        // The page puts each paragraph on a line of its own, "<p>text</p>",
        // so the text is the line less its first 3 and last 4 characters.
        if (line.contains(u"<p>") && line.contains(u"</p>") && line.size() >= 7)
            return line.mid(3, line.size() - 7);
    }
    return QString();
}

// The list of meanings of a word's page.
QString youdaoWordMeanings(const QStringList& lines)
{
    const qsizetype block = indexOfLineContaining(lines, u"class=\"trans-container\"");
    if (block < 0)
        return QString();
    QStringList meanings;
    for (qsizetype i = block + 1; i < lines.size(); ++i) {
        const QString& line = lines[i];
        if (line.contains(u"<li>") && line.contains(u"</li>"))
            meanings.append(textBetweenTags(line, u"<li>", u"</li>"));
        else if (line.contains(u"</ul>") || line.contains(u"</div>"))
            break;
    }
    return meanings.join(u'；');
}

}  // namespace

QString googleTranslation(const QByteArray& body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    const QJsonArray segments = document.array();
    if (segments.isEmpty())
        return QString();
    return segments.at(0).toArray().at(0).toArray().at(0).toString();
}

QString youdaoTranslation(const QByteArray& body)
{
    const QStringList lines = QString::fromUtf8(body).split(u'\n');
    const QString sentence = youdaoSentenceTranslation(lines);
    return sentence.isEmpty() ? youdaoWordMeanings(lines) : sentence;
}

EudicReply readEudicReply(const QByteArray& body)
{
    EudicReply reply;
    reply.text = QString::fromUtf8(body);
    reply.isErrorPage = reply.text.contains(QStringView(htmlPageMarker));
    return reply;
}

QString deeplTranslation(const QByteArray& body)
{
    if (QString::fromUtf8(body).contains(QStringView(htmlPageMarker)))
        return QString();
    const QJsonObject result = QJsonDocument::fromJson(body).object().value(u"result").toObject();
    const QJsonObject translation = result.value(u"translations").toArray().at(0).toObject();
    const QJsonObject beam = translation.value(u"beams").toArray().at(0).toObject();
    return beam.value(u"postprocessed_sentence").toString();
}

}  // namespace lexicorn
