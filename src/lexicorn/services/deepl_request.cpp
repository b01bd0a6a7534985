#include "lexicorn/services/deepl_request.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace lexicorn {

QByteArray deeplRequestBody(qint64 id)
{
    const QStringList splittedTexts{
        QStringLiteral("Bitwise NOT is one of just a few ECMAScript operators related to binary mathematics."),
        QStringLiteral("In fact"),
    };
    // One job per sentence, each with the sentences around it as context.
    QJsonArray jobs;
    for (qsizetype i = 0; i < splittedTexts.size(); ++i) {
        jobs.append(QJsonObject{
            {QStringLiteral("kind"), QStringLiteral("default")},
            {QStringLiteral("raw_en_sentence"), splittedTexts[i]},
            {QStringLiteral("raw_en_context_before"), QJsonArray::fromStringList(splittedTexts.mid(0, i))},
            {QStringLiteral("raw_en_context_after"), QJsonArray::fromStringList(splittedTexts.mid(i + 1))},
            {QStringLiteral("preferred_num_beams"), 1},
        });
    }
    const QJsonObject lang{
        {QStringLiteral("user_preferred_langs"), QJsonArray{QStringLiteral("EN"), QStringLiteral("ZH")}},
        {QStringLiteral("source_lang_user_selected"), QStringLiteral("EN")},
        {QStringLiteral("target_lang"), QStringLiteral("ZH")},
        {QStringLiteral("lang_is_confident"), false},
    };
    const QJsonObject call{
        {QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
        {QStringLiteral("method"), QStringLiteral("LMT_handle_jobs")},
        {QStringLiteral("id"), id},
        {QStringLiteral("params"), QJsonObject{
            {QStringLiteral("jobs"), jobs},
            {QStringLiteral("lang"), lang},
            {QStringLiteral("priority"), -1},
        }},
    };
    return QJsonDocument(call).toJson(QJsonDocument::Compact);
}

}  // namespace lexicorn
