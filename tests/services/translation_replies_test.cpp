#include "lexicorn/services/translation_replies.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

struct ReplyCase {
    const char* name;
    QByteArray body;
    QString expected;
};

TEST(TranslationReplies, GoogleTakesTheFirstSegmentOnly)
{
    const ReplyCase cases[] = {
        {"one segment", R"([[["你好，世界。","Hello, world.",null,null,10]],null,"en"])", QStringLiteral("你好，世界。")},
        {"several segments",
         R"([[["我来了。","I came. ",null,null,3],["我看见了。","I saw. ",null,null,3],["我征服了。","I conquered.",null,null,3]],null,"en",null,null,null,1,[],[["en"],null,[1],["en"]]])",
         QStringLiteral("我来了。")},
        {"first element null", R"([null,null,"en"])", QString()},
        {"translation not a string", R"([[[42,"x"]]])", QString()},
        {"not JSON", "<html><body>302 Moved</body></html>", QString()},
    };
    for (const ReplyCase& c : cases)
        EXPECT_EQ(googleTranslation(c.body), c.expected) << c.name;
}

const QByteArray youdaoHead = "<!DOCTYPE html>\n<html>\n<head><title>有道词典</title></head>\n<body>\n"
                              "<div id=\"results-contents\" class=\"results-content\">\n";
const QByteArray youdaoTail = "</div>\n</body>\n</html>\n";

TEST(TranslationReplies, YoudaoReadsTheSentenceBlockElseTheWordList)
{
    const ReplyCase cases[] = {
        {"machine translation block",
         youdaoHead + "    <div id=\"fanyiToggle\">\n        <div class=\"trans-container\">\n"
                      "            <p>他们昨天去了公园。</p>\n"
                      "            <p>以上为机器翻译结果，长、整句建议使用 <a class=\"viaInner\" href=\"http://f.youdao.com\">人工翻译</a> 。</p>\n"
                      "        </div>\n    </div>\n" + youdaoTail,
         QStringLiteral("他们昨天去了公园。")},
        {"Windows line ends", youdaoHead + "<div id=\"fanyiToggle\">\r\n<div>\r\n\t<p>你好</p>\r\n</div>\r\n" + youdaoTail,
         QStringLiteral("你好")},
        {"paragraph before the block is not it",
         youdaoHead + "<p>广告</p>\n<div id=\"fanyiToggle\">\n<p>正文</p>\n</div>\n" + youdaoTail, QStringLiteral("正文")},
        {"word list, several meanings joined",
         youdaoHead + "    <div class=\"trans-container\">\n        <ul>\n            <li>n. 苹果</li>\n"
                      "            <li>n. 苹果公司</li>\n        </ul>\n    </div>\n"
                      "    <div class=\"trans-container\">\n        <ul>\n            <li>网络 释义</li>\n        </ul>\n    </div>\n" + youdaoTail,
         QStringLiteral("n. 苹果；n. 苹果公司")},
        {"word list stops at the end of its block",
         youdaoHead + "<div class=\"trans-container\">\n<li>adj. 快的</li>\n</div>\n<ul><li>导航</li></ul>\n" + youdaoTail,
         QStringLiteral("adj. 快的")},
        {"sentence block wins over a word list",
         youdaoHead + "<div class=\"trans-container\">\n<ul>\n<li>词义</li>\n</ul>\n</div>\n"
                      "<div id=\"fanyiToggle\">\n<p>句子</p>\n</div>\n" + youdaoTail,
         QStringLiteral("句子")},
        {"sentence block without a paragraph falls back to the list",
         youdaoHead + "<div id=\"fanyiToggle\">\n</div>\n<div class=\"trans-container\">\n<ul>\n<li>v. 跑</li>\n</ul>\n" + youdaoTail,
         QStringLiteral("v. 跑")},
        {"neither block", youdaoHead + "<div class=\"error-wrapper\"><h4>抱歉，没有找到相关内容</h4></div>\n" + youdaoTail, QString()},
        {"block on the last line", "<div id=\"fanyiToggle\">", QString()},
        {"list marker on the last line", "<div class=\"trans-container\">", QString()},
        {"empty paragraph", "<div id=\"fanyiToggle\">\n<p></p>\n", QString()},
        {"short lines after the block", "<div id=\"fanyiToggle\">\n<p>\n</p>\n<\n\n</p><p>\n", QString()},
        {"closing tag before opening in a list item", "<div class=\"trans-container\">\n</li>x<li>\n", QString()},
        {"empty list item", "<div class=\"trans-container\">\n<li></li>\n", QString()},
        {"not UTF-8", QByteArray("<div id=\"fanyiToggle\">\n<p>\xff\xfe</p>\n"), QStringLiteral("\uFFFD\uFFFD")},
    };
    for (const ReplyCase& c : cases)
        EXPECT_EQ(youdaoTranslation(c.body), c.expected) << c.name;
}

TEST(TranslationReplies, EudicBodyIsTheTranslationUnlessAnHtmlPage)
{
    struct Case {
        const char* name;
        QByteArray body;
        bool isErrorPage;
        QString translation;
    };
    const Case cases[] = {
        {"plain text", "他们昨天去了公园。", false, QStringLiteral("他们昨天去了公园。")},
        {"kept as it stands", "  第一行\n第二行 \n", false, QStringLiteral("  第一行\n第二行 \n")},
        {"HTML error page", "<!DOCTYPE html>\n<html><head><title>404</title></head><body>Not Found</body></html>", true, QString()},
        {"HTML page after a blank line", "\r\n<!DOCTYPE html><html></html>", true, QString()},
        {"lower-case doctype is text", "<!doctype html>", false, QStringLiteral("<!doctype html>")},
        {"empty body", "", false, QString()},
    };
    for (const Case& c : cases) {
        const EudicReply reply = readEudicReply(c.body);
        EXPECT_EQ(reply.isErrorPage, c.isErrorPage) << c.name;
        EXPECT_EQ(reply.translation(), c.translation) << c.name;
        EXPECT_EQ(reply.text, QString::fromUtf8(c.body)) << c.name;
    }
}

TEST(TranslationReplies, DeeplReadsTheFirstBeamOfTheFirstTranslation)
{
    const ReplyCase cases[] = {
        {"result", R"({"jsonrpc":"2.0","id":7,"result":{"translations":[{"beams":[{"postprocessed_sentence":"按位非是少数几个运算符之一。","num_symbols":12},{"postprocessed_sentence":"次选","num_symbols":3}],"quality":"normal"},{"beams":[{"postprocessed_sentence":"事实上"}]}],"target_lang":"ZH","source_lang":"EN"}})",
         QStringLiteral("按位非是少数几个运算符之一。")},
        {"HTML page around a JSON answer", R"(<!DOCTYPE html>{"result":{"translations":[{"beams":[{"postprocessed_sentence":"假"}]}]}})", QString()},
        {"JSON-RPC error", R"({"jsonrpc":"2.0","error":{"code":1042912,"message":"Too many requests"}})", QString()},
        {"not JSON", "Service Unavailable", QString()},
    };
    for (const ReplyCase& c : cases)
        EXPECT_EQ(deeplTranslation(c.body), c.expected) << c.name;
}

}  // namespace
}  // namespace lexicorn
