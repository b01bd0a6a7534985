#include "translation_server.h"

#include "support/server_process.h"
#include "support/temp_home.h"

#include "lexicorn/services/ksw_translate.h"
#include "lexicorn/services/translation_hosts.h"

#include "foundation/user_defaults.h"

#include <QElapsedTimer>
#include <QJsonDocument>

#include <functional>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using namespace std::chrono_literals;
using testing::ServerProcess;
using testing::TranslationServer;

// Each test has its own home folder and its own translator reading it.
class TranslateTest : public ::testing::Test {
protected:
    testing::TempHome home_;
    KSWTranslate translate_;
};

QJsonObject answering(const QString& text)
{
    return {{"answer", text}};
}

// Every service, answering nothing unless given something else to say.
QJsonObject services(std::initializer_list<std::pair<QString, QJsonObject>> overrides)
{
    QJsonObject config;
    for (const QString& role : testing::allTranslationRoles())
        config[role] = answering(QString());
    // DeepL always has an answer, which must never be taken.
    config[QStringLiteral("deepl")] = answering(QStringLiteral("深度"));
    for (const auto& [role, settings] : overrides)
        config[role] = settings;
    return config;
}

TEST_F(TranslateTest, EngineNumberPicksTheServicesInOrder)
{
    const QString gcn = QStringLiteral("google_cn"), youdao = QStringLiteral("youdao"), google = QStringLiteral("google"),
                  eudic = QStringLiteral("eudic");
    const QStringList chain{gcn, youdao, google, eudic};
    struct Case {
        const char* name;
        unsigned engine;
        QJsonObject config;
        QString expected;
        QStringList asked;
    };
    const Case cases[] = {
        {"automatic, Google mainland answers", 0,
         services({{gcn, answering("甲")}, {youdao, answering("乙")}, {google, answering("丙")}, {eudic, answering("丁")}}), "甲", {gcn}},
        {"automatic, Youdao after Google mainland gave nothing", 0,
         services({{youdao, answering("乙")}, {google, answering("丙")}, {eudic, answering("丁")}}), "乙", {gcn, youdao}},
        {"automatic, Google international after Youdao gave nothing", 0,
         services({{google, answering("丙")}, {eudic, answering("丁")}}), "丙", {gcn, youdao, google}},
        {"automatic, Eudic last", 0, services({{eudic, answering("丁")}}), "丁", chain},
        {"automatic, nothing anywhere", 0, services({}), "", chain},
        {"automatic, an error status's body is read like any other", 0,
         services({{gcn, QJsonObject{{"status", 500}, {"body", "<html>Server Error</html>"}}},
                   {youdao, QJsonObject{{"status", 500}, {"answer", "乙"}}}}),
         "乙", {gcn, youdao}},
        {"Google mainland", 1, services({{gcn, answering("甲")}, {google, answering("丙")}}), "甲", {gcn}},
        {"Google mainland alone, no fallback", 1,
         services({{youdao, answering("乙")}, {google, answering("丙")}, {eudic, answering("丁")}}), "", {gcn}},
        {"Youdao", 2, services({{gcn, answering("甲")}, {youdao, answering("乙")}}), "乙", {youdao}},
        {"Google international", 3, services({{gcn, answering("甲")}, {google, answering("丙")}}), "丙", {google}},
        {"Eudic", 4, services({{gcn, answering("甲")}, {eudic, answering("丁")}}), "丁", {eudic}},
        {"Eudic error status with text", 4, services({{eudic, QJsonObject{{"status", 503}, {"body", "服务繁忙"}}}}), "服务繁忙", {eudic}},
        {"engine 5", 5, services({{gcn, answering("甲")}, {eudic, answering("丁")}}), "", {}},
        {"largest engine number", 4294967295u, services({{gcn, answering("甲")}}), "", {}},
    };
    for (const Case& c : cases) {
        TranslationServer server(c.config);
        ASSERT_TRUE(server.started()) << c.name;
        server.pointHostsHere();
        translate_.setEngine(c.engine);
        // A sentence of its own per case: an answered one is remembered.
        const QString sentence = QStringLiteral("The cat sat: %1.").arg(QString::fromUtf8(c.name));
        const QString translation = translate_.translatorEn_(sentence);
        EXPECT_EQ(translation, c.expected) << c.name;
        EXPECT_FALSE(translation.isNull()) << c.name;
        EXPECT_EQ(server.rolesAsked(), c.asked) << c.name;
        // Asked again, an answered sentence needs no service; an unanswered one asks again.
        EXPECT_EQ(translate_.translatorEn_(sentence), c.expected) << c.name;
        EXPECT_EQ(server.rolesAsked().size(), c.expected.isEmpty() ? 2 * c.asked.size() : c.asked.size()) << c.name;
    }
}

TEST_F(TranslateTest, EachServiceGetsTheRequestItExpects)
{
    TranslationServer server(services({{"google_cn", answering("谷歌中国")},
                                       {"google", answering("谷歌")},
                                       {"youdao", answering("有道")},
                                       {"eudic", answering("欧路")}}));
    ASSERT_TRUE(server.started());
    server.pointHostsHere();

    // Blanks, quotes, "%" and "#" are escaped, "&" is not, and Chinese goes as UTF-8.
    const QString sentence = QStringLiteral("Tom & Jerry say \"你好\" 100% #1");
    const QString encoded = QStringLiteral("Tom%20&%20Jerry%20say%20%22%E4%BD%A0%E5%A5%BD%22%20100%25%20%231");
    const QString safari = QStringLiteral("Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_4) AppleWebKit/605.1.15 (KHTML, like Gecko) "
                                          "Version/13.1 Safari/605.1.15");
    const QString chrome = QStringLiteral("Mozilla/5.0 (Windows NT 10.0; WOW64) AppleWebKit/537.36 (KHTML, like Gecko) "
                                          "Chrome/55.0.2883.87 Safari/537.36");
    const QString mainlandReferer = server.root("google_cn") + u'/';
    struct Case {
        const char* name;
        std::function<QString()> call;
        QString role;
        QString method;
        QString target;
        std::vector<std::pair<QString, QString>> headers;
        QString translation;
    };
    const Case cases[] = {
        {"Google mainland", [&] { return translate_.cnGoogleFromEn_googleCN_(sentence, true); }, "google_cn", "GET",
         "/translate_a/single?client=at&sl=en&tl=zh-CN&dt=t&q=" + encoded,
         {{"User-Agent", safari}, {"referer", mainlandReferer}, {"host", server.authority("google_cn")}}, "谷歌中国"},
        {"Google international", [&] { return translate_.cnGoogleFromEn_googleCN_(sentence, false); }, "google", "GET",
         "/translate_a/single?client=at&sl=en&tl=zh-CN&dt=t&q=" + encoded,
         {{"User-Agent", safari}, {"referer", mainlandReferer}, {"host", server.authority("google")}}, "谷歌"},
        {"Youdao", [&] { return translate_.cnYoudaoFromEn_(sentence); }, "youdao", "GET", "/w/" + encoded + "/",
         {{"User-Agent", chrome}, {"x-requested-with", "XMLHttpRequest"}}, "有道"},
        {"Eudic", [&] { return translate_.cnOluFromEn_(sentence); }, "eudic", "POST",
         "/Home/TranslationAjax?to=zh-CN&from=en&text=" + encoded + "&contentType=text/plain", {}, "欧路"},
        {"DeepL", [&] { return translate_.cnDeeplFromEn_(sentence); }, "deepl", "POST", "/jsonrpc",
         {{"Content-Type", "application/json; charset=utf-8"}, {"Host", server.authority("deepl")}, {"Origin", server.root("deepl")}},
         "深度"},
    };
    qsizetype seen = 0;
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(), c.translation) << c.name;
        const QJsonArray requests = server.requests();
        ASSERT_EQ(requests.size(), seen + 1) << c.name;
        seen = requests.size();
        const QJsonObject request = requests.last().toObject();
        EXPECT_EQ(request["role"].toString(), c.role) << c.name;
        EXPECT_EQ(request["method"].toString(), c.method) << c.name;
        EXPECT_EQ(request["target"].toString(), c.target) << c.name;
        for (const auto& [name, value] : c.headers)
            EXPECT_EQ(testing::headerValues(request, name), QStringList{value}) << c.name << " " << name.toStdString();
    }

    // DeepL's JSON-RPC call carries its own sample sentences, not the caller's.
    const QJsonObject request = server.requests().last().toObject();
    const QByteArray body = request["body"].toString().toUtf8();
    EXPECT_EQ(testing::headerValues(request, "Content-Length"), QStringList{QString::number(body.size())});
    EXPECT_FALSE(body.contains("Jerry")) << body.toStdString();

    const QJsonObject call = QJsonDocument::fromJson(body).object();
    EXPECT_EQ(call["jsonrpc"].toString(), QStringLiteral("2.0"));
    EXPECT_TRUE(call["id"].isDouble()) << body.toStdString();
    EXPECT_EQ(call["method"].toString(), QStringLiteral("LMT_handle_jobs"));
    const QJsonObject params = call["params"].toObject();
    QStringList sentences;
    for (const QJsonValue& job : params["jobs"].toArray())
        sentences.append(job["raw_en_sentence"].toString());
    EXPECT_EQ(sentences, QStringList({"Bitwise NOT is one of just a few ECMAScript operators related to binary mathematics.", "In fact"}));
    const QJsonObject lang = params["lang"].toObject();
    EXPECT_TRUE(lang["user_preferred_langs"].toArray().contains(QStringLiteral("EN"))) << body.toStdString();
    EXPECT_EQ(lang["source_lang_user_selected"].toString(), QStringLiteral("EN"));
    EXPECT_TRUE(lang.contains("lang_is_confident")) << body.toStdString();
}

TEST_F(TranslateTest, HangingServiceIsGivenUpAfterItsTimeOut)
{
    ServerProcess hang(QStringLiteral("python3"), {testing::faultServerScript(), QStringLiteral("hang")});
    ASSERT_TRUE(hang.started());
    for (const QString& role : testing::allTranslationRoles())
        UserDefaults::standard().set(testing::hostKeyOf(role), hang.url());
    struct Case {
        const char* name;
        std::function<QString()> call;
        std::chrono::milliseconds timeout;
    };
    const Case cases[] = {
        {"Google mainland", [&] { return translate_.translatorEn_withEngine_("Wait.", KSWTranslate::googleMainland); }, 1s},
        {"Youdao", [&] { return translate_.translatorEn_withEngine_("Wait.", KSWTranslate::youdao); }, 1s},
        {"Eudic", [&] { return translate_.translatorEn_withEngine_("Wait.", KSWTranslate::eudic); }, 1s},
        {"DeepL", [&] { return translate_.cnDeeplFromEn_("Wait."); }, 3s},
    };
    for (const Case& c : cases) {
        QElapsedTimer timer;
        timer.start();
        const QString translation = c.call();
        const auto elapsed = std::chrono::milliseconds(timer.elapsed());
        EXPECT_EQ(translation, QString()) << c.name;
        EXPECT_FALSE(translation.isNull()) << c.name;
        // It waited for the service, and gave up well before three time-outs.
        EXPECT_GE(elapsed, c.timeout / 2) << c.name;
        EXPECT_LT(elapsed, c.timeout * 3) << c.name;
    }
}

TEST(TranslationHosts, SettingMayCarryItsOwnScheme)
{
    struct Case {
        QString setting;
        QString serviceScheme;
        QString root;
        QString authority;
    };
    const Case cases[] = {
        {"translate.google.cn", "https", "https://translate.google.cn", "translate.google.cn"},
        {"dict.youdao.com", "http", "http://dict.youdao.com", "dict.youdao.com"},
        {"http://127.0.0.1:8080", "https", "http://127.0.0.1:8080", "127.0.0.1:8080"},
        {"https://mirror.example/", "http", "https://mirror.example", "mirror.example"},
        {"127.0.0.1:9000", "https", "https://127.0.0.1:9000", "127.0.0.1:9000"},
        {"", "https", "https://usual.example", "usual.example"},
    };
    for (const Case& c : cases) {
        const ServiceHost host = serviceHostFromSetting(c.setting, c.serviceScheme, QStringLiteral("usual.example"));
        EXPECT_EQ(host.root(), c.root) << c.setting.toStdString();
        EXPECT_EQ(host.authority, c.authority) << c.setting.toStdString();
    }
}

}  // namespace
}  // namespace lexicorn
