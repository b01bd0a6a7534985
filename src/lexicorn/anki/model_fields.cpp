#include "lexicorn/anki/model_fields.h"

#include "lexicorn/anki/ksw_ankiconnect.h"

#include <QJsonArray>

namespace lexicorn {

std::variant<ModelFields, std::optional<QString>> ModelFields::fetch(const QString& modelName)
{
    const KSWAnkiconnect::Reply reply = KSWAnkiconnect::shareInstance().getModelFieldNames_(modelName);
    if (!reply)
        return std::optional<QString>();
    if (!ankiReplySucceeded(*reply))
        return std::optional<QString>(describeReplyValue(reply->error()));
    QStringList names;
    for (const QJsonValue& name : reply->result().toArray())
        names << name.toString();
    return ModelFields(names);
}

std::optional<QString> ModelFields::resolve(const QString& configured) const
{
    if (configured.isEmpty() || names_.contains(configured))
        return configured;
    for (const QString& name : names_) {
        if (name.compare(configured, Qt::CaseInsensitive) == 0)
            return name;
    }
    return std::nullopt;
}

}  // namespace lexicorn
