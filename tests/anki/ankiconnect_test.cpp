#include "support/server_process.h"
#include "support/temp_home.h"

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"

#include "foundation/user_defaults.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using testing::ServerProcess;

// Each test runs in a process of its own, so the client singleton is made
// afresh for the home folder of that test.
class AnkiconnectTest : public ::testing::Test {
protected:
    testing::TempHome home_;
    KSWAnkiconnect& anki_ = KSWAnkiconnect::shareInstance();
};

// How many requests the fault server has seen, from its "requests N" lines.
int requestsSeen(ServerProcess& server)
{
    int seen = 0;
    for (const QRegularExpressionMatch& match : QRegularExpression(QStringLiteral("requests (\\d+)")).globalMatch(server.errors()))
        seen = match.captured(1).toInt();
    return seen;
}

TEST_F(AnkiconnectTest, FirstUseStoresTheDefaultAddress)
{
    EXPECT_EQ(anki_.ipString(), QStringLiteral("127.0.0.1:8765"));
    EXPECT_EQ(UserDefaults::standard().string(QStringLiteral("ipString")), QStringLiteral("127.0.0.1:8765"));
    anki_.setIpString_(QStringLiteral("10.0.0.1:1"));
    EXPECT_EQ(UserDefaults::standard().string(QStringLiteral("ipString")), QStringLiteral("10.0.0.1:1"));
}

TEST_F(AnkiconnectTest, EveryWrapperSendsItsActionAndParameters)
{
    ServerProcess echo(QStringLiteral("python3"), {testing::faultServerScript(), QStringLiteral("echo")});
    ASSERT_TRUE(echo.started());
    anki_.setIpString_(echo.address());
    UserDefaults::standard().set(QStringLiteral("ANKISET_DECKNAME"), QStringLiteral("Default"));

    const QJsonObject note{{"note", QJsonObject{{"deckName", "Default"}}}};
    struct Case {
        const char* name;
        std::function<KSWAnkiconnect::Reply()> call;
        const char* action;
        QJsonObject params;
    };
    const Case cases[] = {
        {"nil params", [&] { return anki_.postRequestCommand_params_("deckNames", std::nullopt); }, "deckNames", {}},
        {"addNote", [&] { return anki_.addToAnkiWithWordDict_(note); }, "addNote", note},
        {"findNotes in deck", [&] { return anki_.findNotesInCurrentDeckWithNoteid_("T"); }, "findNotes", {{"query", "\"deck:Default\" T"}}},
        {"findNotes", [&] { return anki_.findNotesWithNoteid_("nid:1"); }, "findNotes", {{"query", "nid:1"}}},
        {"getDeckConfig", [&] { return anki_.getDeckConfigWithDeckName_("D"); }, "getDeckConfig", {{"deck", "D"}}},
        {"modelFieldNames", [&] { return anki_.getModelFieldNames_("M"); }, "modelFieldNames", {{"modelName", "M"}}},
        {"deckNames", [&] { return anki_.getDeckNames(); }, "deckNames", {}},
        {"modelNames", [&] { return anki_.getModelNames(); }, "modelNames", {}},
        {"notes info, sent as storeMediaFile", [&] { return anki_.getNotesInfoWithNoteid_(42); }, "storeMediaFile", {{"notes", QJsonArray{42}}}},
        {"media data", [&] { return anki_.updateMediaFile_data_("a.mp3", "QUJD"); }, "storeMediaFile", {{"filename", "a.mp3"}, {"data", "QUJD"}}},
        {"media url", [&] { return anki_.updateMediaFile_url_("a.mp3", "http://x/a"); }, "storeMediaFile", {{"filename", "a.mp3"}, {"url", "http://x/a"}}},
        {"updateNoteFields", [&] { return anki_.updateWithParams_(note); }, "updateNoteFields", note},
    };
    for (const Case& c : cases) {
        const KSWAnkiconnect::Reply reply = c.call();
        ASSERT_TRUE(reply) << c.name;
        const QJsonObject seen = reply->value("result").toObject();
        const QJsonObject headers = seen.value("headers").toObject();
        EXPECT_EQ((QStringList{seen.value("method").toString(), seen.value("path").toString(),
                               headers.value("Content-Type").toString(), headers.value("Accept").toString()}),
                  (QStringList{"POST", "/", "application/json; charset=utf-8", "application/json"}))
            << c.name;
        EXPECT_EQ(seen.value("body").toObject(), (QJsonObject{{"action", c.action}, {"params", c.params}, {"version", 6}}))
            << c.name;
    }

    // Without a deck name the query goes out alone.
    UserDefaults::standard().remove(QStringLiteral("ANKISET_DECKNAME"));
    const auto reply = anki_.findNotesInCurrentDeckWithNoteid_("T");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->value("result").toObject().value("body").toObject().value("params").toObject().value("query").toString(), QStringLiteral("T"));
}

TEST_F(AnkiconnectTest, ServersThatFailCostThreeAttemptsEachBoundedByTheTimeOut)
{
    const QJsonObject note{{"note", QJsonObject{{"deckName", "Default"}}}};
    struct Case {
        const char* mode;
        const char* action;
        int requests;  // as seen by the server
        bool reply;
    };
    const Case cases[] = {
        {"hang", "deckNames", 3, false},      // every attempt times out
        {"slow", "deckNames", 3, false},      // answers after 3 s, too late each time
        {"garbage", "deckNames", 3, false},   // a reply that is not JSON counts as none
        {"close", "deckNames", 3, false},     // connection closed without a reply
        {"array", "deckNames", 1, true},      // JSON of another shape is still the answer
        // An add that may have reached Anki is not sent again blindly.
        {"slow", "addNote", 1, false},
        {"close", "addNote", 1, false},
    };
    for (const Case& c : cases) {
        ServerProcess server(QStringLiteral("python3"), {testing::faultServerScript(), QString::fromUtf8(c.mode)});
        ASSERT_TRUE(server.started()) << c.mode;
        anki_.setIpString_(server.address());
        QElapsedTimer timer;
        timer.start();
        const bool addNote = QByteArray(c.action) == "addNote";
        EXPECT_EQ(bool(addNote ? anki_.addToAnkiWithWordDict_(note) : anki_.getDeckNames()), c.reply) << c.mode << " " << c.action;
        // Three attempts of at most two seconds each, plus slack for a busy machine.
        EXPECT_LT(timer.elapsed(), 3 * 2000 + 2000) << c.mode;
        server.stop();
        EXPECT_EQ(requestsSeen(server), c.requests) << c.mode << " " << c.action;
    }
}

TEST_F(AnkiconnectTest, NobodyListeningGivesNothingAndVersionLogsWhy)
{
    anki_.setIpString_(QStringLiteral("127.0.0.1:%1").arg(testing::closedPort()));
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(anki_.getVersion());
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(QString::fromStdString(log).count(QStringLiteral("🌀🌀🌀🌀 AnkiConnect error: ")), 3) << log;
    EXPECT_NE(log.find("🌀🌀🌀🌀 KSWAnkiconnect getVersion error: (null)"), std::string::npos) << log;

    // An address that already carries a scheme gets a second one and fails.
    anki_.setIpString_(QStringLiteral("http://127.0.0.1:%1").arg(testing::closedPort()));
    EXPECT_FALSE(anki_.getDeckNames());
}

TEST(AnkiReply, AnyJsonValueIsAReply)
{
    struct Case {
        const char* body;
        bool reply;
        bool succeeded;
    };
    const Case cases[] = {
        {R"({"result": 6, "error": null})", true, true},
        {R"({"result": null, "error": "model was not found: X"})", true, false},
        {R"({"result": 6})", true, false},
        {R"([1, 2])", true, false},
        {R"(6)", true, false},
        {R"(1, 2)", false, false},
        {"", false, false},
        {"<html>", false, false},
    };
    for (const Case& c : cases) {
        const auto reply = parseAnkiReply(QByteArray(c.body));
        EXPECT_EQ(reply.has_value(), c.reply) << c.body;
        if (reply) {
            EXPECT_EQ(ankiReplySucceeded(*reply), c.succeeded) << c.body;
        }
    }
}

TEST(AnkiReply, AMultiReplyGivesEachActionItsOwn)
{
    struct Case {
        const char* body;
        std::vector<const char*> replies;  // for two actions
    };
    const Case cases[] = {
        {R"({"result": [{"result": 1, "error": null}, {"result": null, "error": "no"}], "error": null})",
         {R"({"error":null,"result":1})", R"({"error":"no","result":null})"}},
        // Actions that named no version get their bare results.
        {R"({"result": [[1, 2], "a.mp3"], "error": null})", {R"({"error":null,"result":[1,2]})", R"({"error":null,"result":"a.mp3"})"}},
        {R"({"result": null, "error": "unsupported action"})",
         {R"({"error":"unsupported action","result":null})", R"({"error":"unsupported action","result":null})"}},
        {R"({"result": [1], "error": null})",
         {R"({"error":"AnkiConnect answered multi with {\"error\":null,\"result\":[1]}","result":null})",
          R"({"error":"AnkiConnect answered multi with {\"error\":null,\"result\":[1]}","result":null})"}},
    };
    for (const Case& c : cases) {
        const std::vector<AnkiReply> replies = splitMultiReply(*parseAnkiReply(QByteArray(c.body)), 2);
        ASSERT_EQ(replies.size(), 2u) << c.body;
        for (std::size_t i = 0; i < 2; ++i)
            EXPECT_EQ(replies[i].text(), QString::fromUtf8(c.replies[i])) << c.body;
    }
}

// Against the real Anki collection engine.
class AnkiPeerTest : public AnkiconnectTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(peer_.started()) << peer_.errors().toStdString();
        anki_.setIpString_(peer_.address());
    }
    ServerProcess peer_{QStringLiteral(LEXICORN_ANKI_PEER), {QStringLiteral("--collection"), home_.path() + QStringLiteral("/anki")}};
};

TEST_F(AnkiPeerTest, VersionDecksModelsAndFields)
{
    EXPECT_EQ(anki_.getVersion(), QJsonValue(6));
    const auto decks = anki_.getDeckNames();
    ASSERT_TRUE(decks);
    EXPECT_TRUE(decks->value("result").toArray().contains(QStringLiteral("Default")));
    const auto fields = anki_.getModelFieldNames_(QStringLiteral("Basic"));
    ASSERT_TRUE(fields);
    EXPECT_EQ(fields->value("result").toArray(), (QJsonArray{"Front", "Back"}));
    const auto missing = anki_.getModelFieldNames_(QStringLiteral("Nope"));
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->value("error").toString(), QStringLiteral("model was not found: Nope"));
}

}  // namespace
}  // namespace lexicorn
