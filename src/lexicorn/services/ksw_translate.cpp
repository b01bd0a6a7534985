#include "lexicorn/services/ksw_translate.h"

#include "lexicorn/settings/preference_keys.h"

#include "lexicorn/services/deepl_request.h"
#include "lexicorn/services/translation_hosts.h"
#include "lexicorn/services/translation_replies.h"

#include "foundation/http_client.h"
#include "foundation/log.h"
#include "foundation/user_defaults.h"

#include <QRandomGenerator>
#include <QUrl>

namespace lexicorn {

namespace {


// Percent-encodes text for a URL query the way Foundation's URL-query
// character set does: letters, digits and - . _ ~ ! $ & ' ( ) * + , ; = : @ / ?
// stay as they are. So "&" is not escaped, and a sentence holding one ends
// the query parameter there; the services have always been sent it so.
QString percentEncodedForQuery(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "!$&'()*+,;=:@/?"));
}

QUrl urlFromEncoded(const QString& address)
{
    return QUrl::fromEncoded(address.toUtf8(), QUrl::TolerantMode);
}

// An empty string that is not null, for callers that tell the two apart.
QString nonNull(QString text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

unsigned storedEngine()
{
    UserDefaults& defaults = UserDefaults::standard();
    if (!defaults.contains(keys::engine))
        defaults.set(keys::engine, unsigned(KSWTranslate::googleMainland));
    return unsigned(defaults.integer(keys::engine));
}

}  // namespace

KSWTranslate& KSWTranslate::shareInstance()
{
    static KSWTranslate* instance = new KSWTranslate;
    return *instance;
}

KSWTranslate::KSWTranslate() : engine_(storedEngine()) {}

QString KSWTranslate::translatorEn_(const QString& sentence)
{
    return translatorEn_withEngine_(sentence, engine());
}

QString KSWTranslate::translatorEn_withEngine_(const QString& sentence, unsigned engine)
{
    const QString key = QString::number(engine) + u'\n' + sentence;
    {
        const std::lock_guard lock(memoryMutex_);
        if (const QString* known = memory_.object(key))
            return *known;
    }
    const QString translation = translateUncached(sentence, engine);
    // Only answers are remembered: a service that failed is asked again next time.
    if (!translation.isEmpty()) {
        const std::lock_guard lock(memoryMutex_);
        memory_.insert(key, new QString(translation));
    }
    return translation;
}

QString KSWTranslate::translateUncached(const QString& sentence, unsigned engine)
{
    switch (engine) {
    case automatic: {
        const QString mainland = cnGoogleFromEn_googleCN_(sentence, true);
        if (!mainland.isEmpty())
            return mainland;
        const QString youdao = cnYoudaoFromEn_(sentence);
        if (!youdao.isEmpty())
            return youdao;
        const QString international = cnGoogleFromEn_googleCN_(sentence, false);
        if (!international.isEmpty())
            return international;
        return cnOluFromEn_(sentence);
    }
    case googleMainland:
        return cnGoogleFromEn_googleCN_(sentence, true);
    case youdao:
        return cnYoudaoFromEn_(sentence);
    case googleInternational:
        return cnGoogleFromEn_googleCN_(sentence, false);
    case eudic:
        return cnOluFromEn_(sentence);
    default:
        return nonNull(QString());
    }
}

namespace {

// Sends an engine's request and reads its reply; a transport failure is logged
// and gives the empty string.
QString sendAndRead(const HttpRequest& request, QString (*read)(const QByteArray&))
{
    const HttpResponse response = HttpClient::shared().send(request);
    if (!response.replied()) {
        logLine(response.error);
        return nonNull(QString());
    }
    return nonNull(read(response.body));
}

}  // namespace

QString KSWTranslate::cnGoogleFromEn_googleCN_(const QString& sentence, bool googleCN)
{
    const ServiceHost host = googleCN ? googleMainlandHost() : googleInternationalHost();
    HttpRequest request;
    request.method = "GET";
    request.url = urlFromEncoded(QStringLiteral("%1/translate_a/single?client=at&sl=en&tl=zh-CN&dt=t&q=%2")
                                     .arg(host.root(), percentEncodedForQuery(sentence)));
    request.timeout = googleTimeout;
    request.headers = {
        {"User-Agent", "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_4) AppleWebKit/605.1.15 (KHTML, like Gecko) Version/13.1 Safari/605.1.15"},
        // Both Google endpoints are told the request comes from the mainland page.
        {"referer", (googleMainlandHost().root() + u'/').toUtf8()},
        {"host", host.authority.toUtf8()},
    };

    return sendAndRead(request, googleTranslation);
}

QString KSWTranslate::cnYoudaoFromEn_(const QString& sentence)
{
    HttpRequest request;
    request.method = "GET";
    request.url = urlFromEncoded(QStringLiteral("%1/w/%2/#keyfrom=dict2.top").arg(youdaoHost().root(), percentEncodedForQuery(sentence)));
    request.timeout = youdaoTimeout;
    request.headers = {
        {"User-Agent", "Mozilla/5.0 (Windows NT 10.0; WOW64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/55.0.2883.87 Safari/537.36"},
        {"x-requested-with", "XMLHttpRequest"},
    };

    return sendAndRead(request, youdaoTranslation);
}

QString KSWTranslate::cnOluFromEn_(const QString& sentence)
{
    HttpRequest request;
    request.method = "POST";
    request.url = urlFromEncoded(QStringLiteral("%1/Home/TranslationAjax?to=zh-CN&from=en&text=%2&contentType=%3")
                                     .arg(eudicHost().root(), percentEncodedForQuery(sentence),
                                          percentEncodedForQuery(QStringLiteral("text/plain"))));
    request.timeout = eudicTimeout;

    QString translation;
    const HttpResponse response = HttpClient::shared().send(request);
    if (!response.replied()) {
        logLine(QStringLiteral("🌀🌀🌀🌀 Olu error: %1 🌀🌀🌀🌀").arg(response.error));
    } else {
        const EudicReply reply = readEudicReply(response.body);
        if (reply.isErrorPage) {
            logLine(QStringLiteral("🌀🌀🌀🌀 Olu error: %1 🌀🌀🌀🌀").arg(reply.text));
        } else {
            translation = reply.translation();
            logLine(QStringLiteral("🌀🌀🌀🌀 sentenceCN: %1 🌀🌀🌀🌀").arg(translation));
        }
    }
    if (translation.isEmpty())
        logLine(QStringLiteral("🌀🌀🌀🌀 sentenceCN Null!!! 🌀🌀🌀🌀"));
    return nonNull(translation);
}

QString KSWTranslate::cnDeeplFromEn_(const QString& sentence)
{
    // The request carries the fixed sample sentences, not this one (see deepl_request.h).
    (void)sentence;
    const ServiceHost host = deeplHost();
    HttpRequest request;
    request.method = "POST";
    request.url = urlFromEncoded(host.root() + QStringLiteral("/jsonrpc"));
    request.timeout = deeplTimeout;
    request.body = deeplRequestBody(QRandomGenerator::global()->bounded(qint64(1), qint64(100000000)));
    request.headers = {
        {"Content-Length", QByteArray::number(request.body.size())},
        {"Content-Type", "application/json; charset=utf-8"},
        {"Host", host.authority.toUtf8()},
        {"Origin", host.root().toUtf8()},
    };

    return sendAndRead(request, deeplTranslation);
}

}  // namespace lexicorn
