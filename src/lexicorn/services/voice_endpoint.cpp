#include "lexicorn/services/voice_endpoint.h"

#include "foundation/http_client.h"
#include "foundation/user_defaults.h"

namespace lexicorn {

QByteArray percentEncodedForQuery(const QString& text)
{
    // Letters, digits and -._~ are kept by default; the rest of the query's
    // allowed characters are kept on top of them.
    return QUrl::toPercentEncoding(text, QByteArrayLiteral("!$&'()*+,/:;=?@"));
}

QString voiceBaseAddress()
{
    QString host = UserDefaults::standard().string(keys::voiceHost).trimmed();
    if (host.isEmpty())
        host = defaultVoiceHost;
    if (!host.contains(QStringLiteral("://")))
        host = QStringLiteral("https://") + host;
    while (host.endsWith(u'/'))
        host.chop(1);
    return host;
}

QUrl voiceURL(const QString& word)
{
    const QByteArray address = voiceBaseAddress().toUtf8() + QByteArrayLiteral("/dictvoice?audio=") + percentEncodedForQuery(word)
        + QByteArrayLiteral("&type=2");
    return QUrl::fromEncoded(address, QUrl::StrictMode);
}

QString voiceFileName(const QString& word)
{
    return QStringLiteral("MN3_YD_") + word + QStringLiteral("_1.mp3");
}

VoiceDownload downloadVoice(const QString& word, std::chrono::milliseconds timeout)
{
    return downloadVoice(voiceURL(word), timeout);
}

VoiceDownload downloadVoice(const QUrl& url, std::chrono::milliseconds timeout)
{
    VoiceDownload download;
    HttpRequest request;
    request.url = url;
    if (!request.url.isValid()) {
        download.problem = QStringLiteral("the voice service address is not usable (check the %1 setting)").arg(keys::voiceHost);
        return download;
    }
    request.timeout = timeout;
    const HttpResponse response = HttpClient::shared().send(request);
    if (!response.replied())
        download.problem = response.error;
    else if (response.status < 200 || response.status > 299)
        download.problem = QStringLiteral("the voice service answered HTTP %1").arg(response.status);
    else if (response.body.isEmpty())
        download.problem = QStringLiteral("the voice service sent no audio");
    else
        download.audio = response.body;
    return download;
}

}  // namespace lexicorn
