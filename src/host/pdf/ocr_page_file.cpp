#include "host/pdf/ocr_page_file.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <cmath>

namespace lexicorn::host {

namespace {

// No page is near this many points wide; a larger number is damage.
constexpr double largestCoordinate = 1e7;

const QString versionKey = QStringLiteral("version");
const QString pageKey = QStringLiteral("page");
const QString linesKey = QStringLiteral("lines");
const QString textKey = QStringLiteral("text");
const QString rectsKey = QStringLiteral("rects");

double hundredths(double value)
{
    return std::round(value * 100.0) / 100.0;
}

// A whole number stored as a JSON number, else nothing.
std::optional<qint64> wholeNumber(const QJsonValue& value)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (!(std::fabs(number) < 1e15) || number != std::trunc(number))
        return std::nullopt;
    return qint64(number);
}

std::optional<CharLine> decodeLine(const QJsonValue& value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    const QJsonValue textValue = object.value(textKey);
    const QJsonValue rectsValue = object.value(rectsKey);
    if (!textValue.isString() || !rectsValue.isArray())
        return std::nullopt;
    const QString text = textValue.toString();
    const QJsonArray rects = rectsValue.toArray();
    if (text.isEmpty() || !QStringView(text).isValidUtf16() || rects.size() != text.size() * 4)
        return std::nullopt;
    CharLine line;
    line.reserve(std::size_t(text.size()));
    for (qsizetype i = 0; i < text.size(); ++i) {
        double edges[4];
        for (int k = 0; k < 4; ++k) {
            const QJsonValue edge = rects.at(i * 4 + k);
            if (!edge.isDouble() || !(std::fabs(edge.toDouble()) <= largestCoordinate))
                return std::nullopt;
            edges[k] = edge.toDouble();
        }
        if (edges[2] < edges[0] || edges[3] < edges[1])
            return std::nullopt;
        line.push_back(CharRecord{char16_t(text[i].unicode()), QRectF(QPointF(edges[0], edges[1]), QPointF(edges[2], edges[3]))});
    }
    return line;
}

}  // namespace

QByteArray encodeOcrPage(int pageNo, const PageLines& lines)
{
    QJsonArray lineArray;
    for (const CharLine& line : lines) {
        QString text;
        text.reserve(qsizetype(line.size()));
        QJsonArray rects;
        for (const CharRecord& record : line) {
            text.append(QChar(record.ch));
            const QRectF& r = record.rect;
            rects.append(hundredths(r.left()));
            rects.append(hundredths(r.top()));
            rects.append(hundredths(r.right()));
            rects.append(hundredths(r.bottom()));
        }
        lineArray.append(QJsonObject{{textKey, text}, {rectsKey, rects}});
    }
    const QJsonObject root{{versionKey, ocrPageFileVersion}, {pageKey, pageNo}, {linesKey, lineArray}};
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

std::optional<PageLines> decodeOcrPage(const QByteArray& bytes, int pageNo)
{
    if (bytes.size() > largestOcrPageFile)
        return std::nullopt;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject root = document.object();
    if (wholeNumber(root.value(versionKey)) != ocrPageFileVersion || wholeNumber(root.value(pageKey)) != pageNo)
        return std::nullopt;
    const QJsonValue linesValue = root.value(linesKey);
    if (!linesValue.isArray())
        return std::nullopt;
    PageLines lines;
    for (const QJsonValue& value : linesValue.toArray()) {
        std::optional<CharLine> line = decodeLine(value);
        if (!line)
            return std::nullopt;
        lines.push_back(std::move(*line));
    }
    return lines;
}

}  // namespace lexicorn::host
