#include "lexicorn/services/translation_hosts.h"

#include "lexicorn/settings/preference_keys.h"

#include "foundation/user_defaults.h"

namespace lexicorn {

namespace {

const QString https = QStringLiteral("https");
const QString http = QStringLiteral("http");

ServiceHost hostSetting(const QString& key, const QString& serviceScheme, const QString& usualHost)
{
    return serviceHostFromSetting(UserDefaults::standard().string(key), serviceScheme, usualHost);
}

}  // namespace

ServiceHost serviceHostFromSetting(const QString& value, const QString& serviceScheme, const QString& usualHost)
{
    QString host = value.trimmed();
    while (host.endsWith(u'/'))
        host.chop(1);
    if (host.isEmpty())
        return {serviceScheme, usualHost};
    const qsizetype schemeEnd = host.indexOf(QStringLiteral("://"));
    if (schemeEnd < 0)
        return {serviceScheme, host};
    return {host.left(schemeEnd), host.mid(schemeEnd + 3)};
}

ServiceHost googleMainlandHost()
{
    return hostSetting(keys::googleCnHost, https, QStringLiteral("translate.google.cn"));
}

ServiceHost googleInternationalHost()
{
    return hostSetting(keys::googleHost, https, QStringLiteral("translate.google.com"));
}

ServiceHost youdaoHost()
{
    return hostSetting(keys::youdaoHost, http, QStringLiteral("dict.youdao.com"));
}

ServiceHost eudicHost()
{
    return hostSetting(keys::eudicHost, https, QStringLiteral("dict.eudic.net"));
}

ServiceHost deeplHost()
{
    return hostSetting(keys::deeplHost, https, QStringLiteral("www2.deepl.com"));
}

}  // namespace lexicorn
