#include "lexicorn/dictionary/records.h"

#include "lexicorn/dictionary/text_helpers.h"

#include <QRegularExpression>

namespace lexicorn {

EnWord::EnWord(QString title, EnWordDefList defs) : title(std::move(title)), defs(std::move(defs)) {}

const EnWordDefList& EnWord::defaultDefs()
{
    static const EnWordDefList shared{std::make_shared<EnWordDef>()};
    return shared;
}

DictData::DictData(QString word, QString quoteSentence, EnWordList enWords)
    : word_(std::move(word)), quoteSentence_(std::move(quoteSentence)), enWords_(std::move(enWords))
{
}

DictDataPtr DictData::make(QString word, QString quoteSentence, EnWordList enWords)
{
    return std::make_shared<DictData>(std::move(word), std::move(quoteSentence), std::move(enWords));
}

DictData::Range DictData::rangeOfWord() const
{
    // The word is deliberately not escaped: characters special in regular
    // expressions act as such. Each retry loosens the pattern: first without
    // hyphens, then also without blanks and line feeds.
    QString pattern = QStringLiteral("\\b") + word_ + QStringLiteral("\\b");
    const QString loosened[] = {pattern, deletingHyphen(pattern), deletingSpaceAndBr(deletingHyphen(pattern))};
    for (const QString& candidate : loosened) {
        const QRegularExpression expression(candidate, QRegularExpression::UseUnicodePropertiesOption);
        if (!expression.isValid())
            continue;
        const QRegularExpressionMatch match = expression.match(quoteSentence_);
        if (match.hasMatch())
            return {match.capturedStart(), match.capturedLength()};
    }
    return {};
}

std::optional<SelectDictType> SelectDictType::fromRawValue(int64_t raw)
{
    if (raw == 0 || raw == 1)
        return SelectDictType(int(raw));
    return std::nullopt;
}

QString SelectDictType::name() const
{
    return raw_ == 0 ? QStringLiteral("LDOCE5") : QStringLiteral("collins");
}

QString SelectDictType::fileName() const
{
    return raw_ == 0 ? QStringLiteral("LDOCE5_html.json") : QStringLiteral("collins_html.json");
}

std::optional<EnDict> enDictFromRawValue(const QString& raw)
{
    if (raw == QStringLiteral("collins"))
        return EnDict::Collins;
    return std::nullopt;
}

QString rawValue(EnDict)
{
    return QStringLiteral("collins");
}

std::optional<ErrorCode> errorCodeFromRawValue(int64_t raw)
{
    if (raw == int64_t(ErrorCode::structure) || raw == int64_t(ErrorCode::ankiUnreachable))
        return ErrorCode(raw);
    return std::nullopt;
}

}  // namespace lexicorn
