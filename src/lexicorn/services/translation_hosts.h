#pragma once

#include <QString>

namespace lexicorn {

// Where a translation service is reached: a scheme and a host (with its port,
// if any).
struct ServiceHost {
    QString scheme;     // "https"
    QString authority;  // "translate.google.cn", "127.0.0.1:8080"

    // "https://translate.google.cn", with no slash at the end.
    QString root() const { return scheme + QStringLiteral("://") + authority; }
};

// Reads a host setting. A value with its own scheme ("http://127.0.0.1:8080")
// keeps it; a bare host gets the service's scheme. Slashes at the end are
// dropped; an empty value means the service's usual host.
ServiceHost serviceHostFromSetting(const QString& value, const QString& serviceScheme, const QString& usualHost);

// The hosts of the services, read from the user defaults at each call so a
// change takes effect with the next request. Keys and usual hosts:
//   SPECIAL_HOST_GOOGLE_CN  translate.google.cn   (Google, mainland China)
//   SPECIAL_HOST_GOOGLE     translate.google.com  (Google, international)
//   SPECIAL_HOST_YOUDAO     dict.youdao.com       (reached over plain http)
//   SPECIAL_HOST_EUDIC      dict.eudic.net
//   SPECIAL_HOST_DEEPL      www2.deepl.com
ServiceHost googleMainlandHost();
ServiceHost googleInternationalHost();
ServiceHost youdaoHost();
ServiceHost eudicHost();
ServiceHost deeplHost();

}  // namespace lexicorn
