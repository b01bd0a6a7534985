#include "lexicorn/render/card_error.h"

namespace lexicorn {

namespace {
const QString errorKey = QStringLiteral("error");
}

CardError CardError::make(ErrorCode code, const QString& message)
{
    CardError error;
    error.code = int(code);
    error.userInfo.insert(errorKey, message);
    return error;
}

QString CardError::message() const
{
    return userInfo.value(errorKey).toString();
}

QJsonObject CardError::toJson() const
{
    return {{QStringLiteral("domain"), domain}, {QStringLiteral("code"), code}, {errorKey, message()}};
}

}  // namespace lexicorn
